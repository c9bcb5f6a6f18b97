#pragma once

#include "recorder/streamformat.h"

#include <QByteArrayView>

#include <functional>
#include <memory>
#include <span>

// Turns compressed audio into mono samples, only so that its loudness can be
// measured. Input is any slice of the stream, in order, whole frames or not.
// A decoder never throws: once the stream proves undecodable it says so and
// stays failed, so the caller can fall back at once.
class AudioDecoder
{
public:
    // Mono samples in [-1, 1] and the rate they play at. The rate is the one
    // the decoder reports for these samples (an HE-AAC decoder doubles the
    // rate its stream's headers give), so sample count / rate is their time.
    using Sink = std::function<void(int sampleRate, std::span<const float> samples)>;

    // Input that gave no sample for this long is not audio of the codec.
    static constexpr qsizetype MaxBytesWithoutAudio = 64 * 1024;

    virtual ~AudioDecoder() = default;

    // Decodes what `bytes` completes and hands the samples to `sink`. False
    // when the stream cannot be decoded (then and on every later call).
    virtual bool decode(QByteArrayView bytes, const Sink &sink) = 0;

    // A decoder for the format (Ogg: Vorbis; other Ogg codecs fail as
    // undecodable); none when the library cannot be set up.
    static std::unique_ptr<AudioDecoder> create(StreamFormat format);
};
