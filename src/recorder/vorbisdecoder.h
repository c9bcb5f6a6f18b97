#pragma once

#include "recorder/audiodecoder.h"

#include <memory>
#include <vector>

// Ogg Vorbis through libogg and libvorbis. A logical stream's three header
// packets must come first; a new stream (a chained one begins at each of its
// pages that opens a stream) starts over with its own headers.
class VorbisDecoder : public AudioDecoder
{
public:
    VorbisDecoder();
    ~VorbisDecoder() override;
    VorbisDecoder(const VorbisDecoder &) = delete;
    VorbisDecoder &operator=(const VorbisDecoder &) = delete;

    bool decode(QByteArrayView bytes, const Sink &sink) override;

private:
    struct State;
    bool takePage(const Sink &sink);
    bool fail();

    std::unique_ptr<State> m_state;
    std::vector<float> m_mono;
    qsizetype m_bytesWithoutAudio = 0;
    bool m_failed = false;
};
