#pragma once

#include "recorder/audiodecoder.h"

struct mpg123_handle_struct;

// MPEG audio through libmpg123's feed interface, mixed to mono by the library.
class Mp3Decoder : public AudioDecoder
{
public:
    ~Mp3Decoder() override;
    Mp3Decoder(const Mp3Decoder &) = delete;
    Mp3Decoder &operator=(const Mp3Decoder &) = delete;

    static std::unique_ptr<Mp3Decoder> create();
    bool decode(QByteArrayView bytes, const Sink &sink) override;

private:
    explicit Mp3Decoder(mpg123_handle_struct *handle);
    bool fail();

    mpg123_handle_struct *m_handle;
    int m_sampleRate = 0;
    qsizetype m_bytesWithoutAudio = 0;
    bool m_failed = false;
};
