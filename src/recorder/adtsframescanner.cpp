#include "recorder/adtsframescanner.h"

#include <array>

namespace {

constexpr qsizetype HeaderSize = 7;
constexpr qsizetype ChecksumSize = 2;

// By sampling-frequency index; 13 to 15 are not valid.
constexpr std::array<int, 13> Rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                    22050, 16000, 12000, 11025, 8000,  7350};

// Audio time of a frame by rate index and raw data blocks (1 to 4), worked
// out once rather than divided for every frame.
constexpr std::array<std::array<qint64, 4>, 13> durations()
{
    std::array<std::array<qint64, 4>, 13> table{};
    for (std::size_t rate = 0; rate < Rates.size(); ++rate)
        for (int blocks = 1; blocks <= 4; ++blocks)
            table[rate][blocks - 1] = blocks * Q_INT64_C(1024) * 1000000000 / Rates[rate];
    return table;
}

constexpr std::array<std::array<qint64, 4>, 13> Durations = durations();

} // namespace

FrameScanner::Verdict AdtsFrameScanner::readHeader(QByteArrayView bytes, Header &header) const
{
    if (bytes.size() < HeaderSize)
        return bytes.isEmpty() || quint8(bytes[0]) == 0xFF ? Verdict::NeedMore : Verdict::NotFrame;
    const auto b = [&bytes](int i) { return quint8(bytes[i]); };
    // Twelve sync bits, then the layer, always 0.
    if (b(0) != 0xFF || (b(1) & 0xF6) != 0xF0)
        return Verdict::NotFrame;
    const bool checksum = (b(1) & 1) == 0;
    const int rateIndex = (b(2) >> 2) & 0x0F;
    const qsizetype length = (qsizetype(b(3) & 3) << 11) | (qsizetype(b(4)) << 3) | (b(5) >> 5);
    if (rateIndex >= int(Rates.size()) || length < HeaderSize + (checksum ? ChecksumSize : 0))
        return Verdict::NotFrame;
    header.length = length;
    // MPEG version, profile, rate and channels stay the same within a stream.
    header.key = (quint32(b(1) & 0x08) << 16) | (quint32(b(2) & 0xFD) << 8) | (b(3) & 0xC0);
    header.durationNs = Durations[rateIndex][b(6) & 3];
    return Verdict::Frame;
}

qsizetype AdtsFrameScanner::findSync(QByteArrayView bytes, qsizetype from) const
{
    const qsizetype at = bytes.indexOf('\xFF', from);
    return at < 0 ? bytes.size() : at;
}

int AdtsFrameScanner::confirmationsNeeded(bool inSync) const
{
    return inSync ? 1 : 2;
}
