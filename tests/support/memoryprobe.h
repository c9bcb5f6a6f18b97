#pragma once

#include <QtGlobal>

// The heap this process holds right now, as the C library accounts it
// (small blocks in use plus blocks mapped on their own), in bytes. Sampled
// while a test runs, it shows whether memory stays bounded.
qint64 heapInUse();

// The largest heapInUse() seen above what was held when it was made.
class HeapPeak
{
public:
    HeapPeak();
    // Takes a sample; returns the growth so far.
    qint64 sample();
    qint64 growth() const { return m_peak - m_base; }

private:
    qint64 m_base;
    qint64 m_peak;
};
