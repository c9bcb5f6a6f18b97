#include "recorder/audiodecoder.h"

#include "recorder/loudnessenvelope.h"
#include "support/testaudio.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace TestAudio;

namespace {

// One second of silence, a second of a 440 Hz tone at half scale (-9 dBFS
// RMS), silence again.
float beep(double t)
{
    return t >= 1 && t < 2 ? static_cast<float>(0.5 * std::sin(2 * M_PI * 440 * t)) : 0.0f;
}

float tone(double t)
{
    return static_cast<float>(0.3 * std::sin(2 * M_PI * 440 * t));
}

struct Decoded
{
    bool ok = true;
    double seconds = 0;
    LoudnessEnvelope loudness;
};

// Decodes in slices of `slice` bytes, the samples laid one after another.
Decoded decodeAll(StreamFormat codec, QByteArrayView bytes, qsizetype slice = 1000)
{
    Decoded out;
    auto decoder = AudioDecoder::create(codec);
    for (qsizetype at = 0; decoder && out.ok && at < bytes.size(); at += slice)
        out.ok = decoder->decode(bytes.sliced(at, std::min(slice, bytes.size() - at)),
                                 [&](int rate, std::span<const float> samples) {
                                     out.loudness.add(out.seconds, rate, samples);
                                     out.seconds += static_cast<double>(samples.size()) / rate;
                                 });
    EXPECT_TRUE(decoder) << "no decoder";
    if (decoder && !out.ok) {
        EXPECT_FALSE(decoder->decode("", [](int, std::span<const float>) {})) << "a failed decoder recovered";
    }
    return out;
}

double levelDb(const LoudnessEnvelope &loudness, double from, double to)
{
    double sum = 0;
    int count = 0;
    for (qint64 b = LoudnessEnvelope::blockAt(from); b < LoudnessEnvelope::blockAt(to); ++b, ++count)
        sum += std::max(0.0f, loudness.meanSquare(b));
    return 10 * std::log10(sum / count + 1e-12);
}

TEST(AudioDecoderTest, DecodesEachCodecOnTheRightTimeBase)
{
    // The mono 22 kHz AAC stream is where libfaad reports twice the rate (it
    // assumes SBR) and gives twice the samples: the time must not change.
    const SoundFormat formats[] = {{StreamFormat::Mp3, 44100, 2, 128}, {StreamFormat::Mp3, 22050, 1, 32},
                                   {StreamFormat::Mp3, 44100, 2, 320}, {StreamFormat::Aac, 44100, 2, 128},
                                   {StreamFormat::Aac, 22050, 1, 48},  {StreamFormat::Ogg, 44100, 2, 128},
                                   {StreamFormat::Ogg, 22050, 1, 48}};
    for (const SoundFormat &format : formats) {
        SCOPED_TRACE(u"codec %1, %2 Hz, %3 channels, %4 kbit/s"_s.arg(static_cast<int>(format.format))
                         .arg(format.sampleRate)
                         .arg(format.channels)
                         .arg(format.kbps)
                         .toStdString());
        const EncodedSound &audio = encodeSound(beep, 3, format);
        double framed = 0;
        for (const AudioFrame &frame : audio.frames)
            framed += frame.duration;
        const Decoded decoded = decodeAll(format.format, audio.bytes);
        EXPECT_TRUE(decoded.ok);
        EXPECT_NEAR(decoded.seconds, framed, 0.05);
        qint64 onset = LoudnessEnvelope::blockAt(0.5);
        while (onset < 300 && decoded.loudness.meanSquare(onset) < 1e-3)
            ++onset;
        EXPECT_NEAR(onset * LoudnessEnvelope::BlockSeconds, 1.0, 0.06);
        EXPECT_NEAR(levelDb(decoded.loudness, 1.2, 1.8), -9.0, 1.0);
        EXPECT_LT(levelDb(decoded.loudness, 0.2, 0.9), -60);
        EXPECT_LT(levelDb(decoded.loudness, 2.2, 2.8), -60);
    }
}

TEST(AudioDecoderTest, FailsOnWhatItCannotDecode)
{
    QByteArray page = "<html><body>Station offline</body></html>\r\n";
    page = page.repeated(100 * 1024 / page.size());
    QByteArray brokenAac = encodeSound(tone, 2, {StreamFormat::Aac}).bytes;
    for (qsizetype i = brokenAac.size() / 2; i < brokenAac.size() / 2 + 2000; ++i)
        brokenAac[i] = static_cast<char>(i * 7919 % 251);
    const struct
    {
        StreamFormat codec;
        QByteArray bytes;
    } rows[] = {{StreamFormat::Mp3, page},
                {StreamFormat::Aac, page},
                {StreamFormat::Ogg, page},
                {StreamFormat::Mp3, encodeSound(tone, 8, {StreamFormat::Aac}).bytes},
                {StreamFormat::Aac, encodeSound(tone, 8, {StreamFormat::Mp3}).bytes},
                {StreamFormat::Ogg, encodeSound(tone, 8, {StreamFormat::Mp3}).bytes},
                {StreamFormat::Aac, brokenAac}};
    for (const auto &row : rows) {
        SCOPED_TRACE(static_cast<int>(&row - rows));
        EXPECT_FALSE(decodeAll(row.codec, row.bytes).ok);
    }
}

} // namespace
