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

// What a header's version, layer, bitrate and rate bits say, worked out once:
// every frame's header is read, and divisions per frame add up.
struct FrameShape
{
    qint32 length = 0; // without padding; 0: not a valid header
    qint32 paddingSize = 0;
    qint64 durationNs = 0;
};

// Indexed by bits 4 to 1 of the header's second byte and 7 to 2 of its third.
constexpr std::array<FrameShape, 1024> shapes()
{
    std::array<FrameShape, 1024> table{};
    for (int index = 0; index < 1024; ++index) {
        const int version = (index >> 8) & 3;     // 0: MPEG-2.5, 1: reserved, 2: MPEG-2, 3: MPEG-1
        const int layer = 4 - ((index >> 6) & 3); // 4: reserved
        const int bitrateIndex = (index >> 2) & 15;
        const int rateIndex = index & 3;
        if (version == 1 || layer == 4 || bitrateIndex == 0 || bitrateIndex == 15 || rateIndex == 3)
            continue;
        const bool mpeg1 = version == 3;
        const int row = mpeg1 ? layer - 1 : (layer == 1 ? 3 : 4);
        const qint64 bitrate = Bitrates[row][bitrateIndex - 1] * 1000;
        const int rate = Mpeg1Rates[rateIndex] >> (mpeg1 ? 0 : (version == 2 ? 1 : 2));
        FrameShape &shape = table[index];
        int samples = 1152;
        shape.paddingSize = 1;
        if (layer == 1) {
            samples = 384;
            shape.length = qint32(12 * bitrate / rate * 4);
            shape.paddingSize = 4;
        } else if (layer == 3 && !mpeg1) {
            samples = 576;
            shape.length = qint32(72 * bitrate / rate);
        } else {
            shape.length = qint32(144 * bitrate / rate);
        }
        shape.durationNs = samples * Q_INT64_C(1000000000) / rate;
    }
    return table;
}

constexpr std::array<FrameShape, 1024> Shapes = shapes();

} // namespace

FrameScanner::Verdict Mp3FrameScanner::readHeader(QByteArrayView bytes, Header &header) const
{
    if (bytes.size() < HeaderSize)
        return bytes.isEmpty() || quint8(bytes[0]) == 0xFF ? Verdict::NeedMore : Verdict::NotFrame;
    const auto b = [&bytes](int i) { return quint8(bytes[i]); };
    if (b(0) != 0xFF || (b(1) & 0xE0) != 0xE0 || (b(3) & 3) == 2) // emphasis 2 is reserved
        return Verdict::NotFrame;
    const FrameShape &shape = Shapes[((b(1) & 0x1E) << 5) | (b(2) >> 2)];
    if (shape.length == 0)
        return Verdict::NotFrame;
    header.length = shape.length + ((b(2) >> 1) & 1) * shape.paddingSize;
    header.key = (quint32(b(1) & 0x1E) << 8) | (b(2) & 0x0C);
    header.durationNs = shape.durationNs;
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
