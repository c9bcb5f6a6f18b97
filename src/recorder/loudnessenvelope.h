#pragma once

#include <QtGlobal>

#include <deque>
#include <span>

// How loud audio was over time, in blocks of 10 ms: the mean square of the
// samples that fell into each block. Times are seconds on the caller's
// clock; blocks start at whole multiples of the block length.
class LoudnessEnvelope
{
public:
    static constexpr double BlockSeconds = 0.01;

    // Samples that play from `start` on, `sampleRate` of them a second.
    // Samples before the first block kept are not recorded.
    void add(double start, int sampleRate, std::span<const float> samples);
    // Forgets the blocks that end at or before `time`.
    void dropBefore(double time);

    // The block that holds `time`.
    static qint64 blockAt(double time);
    // Mean square of block `index`; negative when no sample fell into it.
    float meanSquare(qint64 index) const;
    qsizetype blocksKept() const { return static_cast<qsizetype>(m_blocks.size()); }

private:
    struct Block
    {
        double sum = 0;
        qint64 count = 0;
    };
    std::deque<Block> m_blocks;
    qint64 m_first = 0;
};
