#pragma once

#include "recorder/framescanner.h"

// MPEG audio frames (MPEG-1, 2 and 2.5, layers I to III). Free-format frames
// carry no length in their header and are not taken for frames.
class Mp3FrameScanner : public FrameScanner
{
public:
    Mp3FrameScanner() = default;

protected:
    Verdict readHeader(QByteArrayView bytes, Header &header) const override;
    qsizetype findSync(QByteArrayView bytes, qsizetype from) const override;
    int confirmationsNeeded(bool inSync) const override;
};
