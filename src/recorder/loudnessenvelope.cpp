#include "recorder/loudnessenvelope.h"

#include <algorithm>
#include <cmath>

qint64 LoudnessEnvelope::blockAt(double time)
{
    // The small offset keeps a time computed as k * 0.01 in block k.
    return static_cast<qint64>(std::floor(time / BlockSeconds + 1e-9));
}

void LoudnessEnvelope::add(double start, int sampleRate, std::span<const float> samples)
{
    if (sampleRate <= 0 || samples.empty())
        return;
    const auto count = static_cast<qint64>(samples.size());
    qint64 i = 0;
    while (i < count) {
        const qint64 block = blockAt(start + static_cast<double>(i) / sampleRate);
        // The first sample of the next block.
        const double next = (static_cast<double>(block + 1) * BlockSeconds - start) * sampleRate;
        const qint64 end = std::clamp(static_cast<qint64>(std::ceil(next - 1e-6)), i + 1, count);
        if (m_blocks.empty())
            m_first = block;
        if (block >= m_first) {
            while (block - m_first >= static_cast<qint64>(m_blocks.size()))
                m_blocks.emplace_back();
            Block &b = m_blocks[static_cast<size_t>(block - m_first)];
            for (qint64 j = i; j < end; ++j)
                b.sum +=
                    static_cast<double>(samples[static_cast<size_t>(j)]) * samples[static_cast<size_t>(j)];
            b.count += end - i;
        }
        i = end;
    }
}

void LoudnessEnvelope::dropBefore(double time)
{
    const qint64 keep = blockAt(time);
    while (!m_blocks.empty() && m_first < keep) {
        m_blocks.pop_front();
        ++m_first;
    }
}

float LoudnessEnvelope::meanSquare(qint64 index) const
{
    if (index < m_first || index - m_first >= static_cast<qint64>(m_blocks.size()))
        return -1;
    const Block &b = m_blocks[static_cast<size_t>(index - m_first)];
    return b.count > 0 ? static_cast<float>(b.sum / static_cast<double>(b.count)) : -1.0f;
}
