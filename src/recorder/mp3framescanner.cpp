#include "recorder/mp3framescanner.h"

#include <array>

namespace {

constexpr qsizetype HeaderSize = 4;

// Kilobits per second by bitrate index 1 to 14; index 0 (free format) and 15
// are not valid.
constexpr std::array<std::array<int, 14>, 5> Bitrates{{
    {32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}, // MPEG-1 layer I
    {32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},    // MPEG-1 layer II
    {32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},     // MPEG-1 layer III
    {32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},    // MPEG-2/2.5 layer I
    {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},         // MPEG-2/2.5 layers II, III
}};

// By sample-rate index, for MPEG-1; MPEG-2 halves and MPEG-2.5 quarters them.
constexpr std::array<int, 3> Mpeg1Rates{44100, 48000, 32000};

} // namespace

FrameScanner::Verdict Mp3FrameScanner::readHeader(QByteArrayView bytes, Header &header) const
{
    if (bytes.size() < HeaderSize)
        return bytes.isEmpty() || quint8(bytes[0]) == 0xFF ? Verdict::NeedMore : Verdict::NotFrame;
    const auto b = [&bytes](int i) { return quint8(bytes[i]); };
    if (b(0) != 0xFF || (b(1) & 0xE0) != 0xE0)
        return Verdict::NotFrame;
    const int version = (b(1) >> 3) & 3;     // 0: MPEG-2.5, 1: reserved, 2: MPEG-2, 3: MPEG-1
    const int layer = 4 - ((b(1) >> 1) & 3); // 4: reserved
    const int bitrateIndex = b(2) >> 4;
    const int rateIndex = (b(2) >> 2) & 3;
    const int padding = (b(2) >> 1) & 1;
    const int emphasis = b(3) & 3;
    if (version == 1 || layer == 4 || bitrateIndex == 0 || bitrateIndex == 15 || rateIndex == 3 ||
        emphasis == 2)
        return Verdict::NotFrame;

    const bool mpeg1 = version == 3;
    const int table = mpeg1 ? layer - 1 : (layer == 1 ? 3 : 4);
    const qint64 bitrate = Bitrates[table][bitrateIndex - 1] * 1000;
    const int rate = Mpeg1Rates[rateIndex] >> (mpeg1 ? 0 : (version == 2 ? 1 : 2));
    int samples = 1152;
    if (layer == 1) {
        samples = 384;
        header.length = (12 * bitrate / rate + padding) * 4;
    } else if (layer == 3 && !mpeg1) {
        samples = 576;
        header.length = 72 * bitrate / rate + padding;
    } else {
        header.length = 144 * bitrate / rate + padding;
    }
    header.key = (quint32(b(1) & 0x1E) << 8) | (b(2) & 0x0C);
    header.durationNs = samples * Q_INT64_C(1000000000) / rate;
    return Verdict::Frame;
}

qsizetype Mp3FrameScanner::findSync(QByteArrayView bytes, qsizetype from) const
{
    const qsizetype at = bytes.indexOf('\xFF', from);
    return at < 0 ? bytes.size() : at;
}

int Mp3FrameScanner::confirmationsNeeded(bool inSync) const
{
    return inSync ? 1 : 2;
}
