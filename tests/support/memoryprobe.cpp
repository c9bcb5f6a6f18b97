#include "support/memoryprobe.h"

#include <malloc.h>

#include <algorithm>

qint64 heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

HeapPeak::HeapPeak() : m_base(heapInUse()), m_peak(m_base) {}

qint64 HeapPeak::sample()
{
    m_peak = std::max(m_peak, heapInUse());
    return growth();
}
