#pragma once

#include "recorder/audiodecoder.h"

#include <QByteArray>

// AAC in ADTS frames through libfaad. The library wants whole frames, so the
// input is gathered until the frame its header announces is complete.
class AacDecoder : public AudioDecoder
{
public:
    ~AacDecoder() override;
    AacDecoder(const AacDecoder &) = delete;
    AacDecoder &operator=(const AacDecoder &) = delete;

    static std::unique_ptr<AacDecoder> create();
    bool decode(QByteArrayView bytes, const Sink &sink) override;

private:
    explicit AacDecoder(void *handle);
    bool decodeFrame(qsizetype length, const Sink &sink);
    bool fail();

    void *m_handle;
    QByteArray m_pending;
    std::vector<float> m_mono;
    qsizetype m_bytesWithoutAudio = 0;
    bool m_initialised = false;
    bool m_failed = false;
};
