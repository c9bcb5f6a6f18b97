#pragma once

#include "recorder/framescanner.h"

// AAC in ADTS frames, with or without the header's checksum. HE-AAC streams
// announce the core rate and 1024 samples per frame, which gives the same time.
class AdtsFrameScanner : public FrameScanner
{
public:
    AdtsFrameScanner() = default;

protected:
    Verdict readHeader(QByteArrayView bytes, Header &header) const override;
    qsizetype findSync(QByteArrayView bytes, qsizetype from) const override;
    int confirmationsNeeded(bool inSync) const override;
};
