#pragma once

#include "recorder/framescanner.h"

#include <QList>

// Ogg pages, found by their capture pattern and checked by their checksum.
// The pages of a stream's header packets (Vorbis: identification, comments and
// setup; Opus: OpusHead and OpusTags) are kept, so that a file beginning later
// in the stream can begin with them; a chained stream's new headers replace
// them. A page's audio time comes from granule positions, so the first audio
// page of a stream joined in the middle counts nothing: there is no earlier
// position to measure it from.
class OggPageScanner : public FrameScanner
{
public:
    // Header pages beyond this size (pictures in the comments) are not kept:
    // files then begin without them rather than memory growing with them.
    static constexpr qsizetype HeaderLimit = 256 * 1024;

    OggPageScanner() = default;

protected:
    Verdict readHeader(QByteArrayView bytes, Header &header) const override;
    qsizetype findSync(QByteArrayView bytes, qsizetype from) const override;
    int confirmationsNeeded(bool inSync) const override;
    void describe(const Header &header, QByteArrayView page, FrameMark &piece) override;

private:
    // One logical stream of the current link.
    struct Logical
    {
        quint32 serial = 0;
        int rate = 0; // of the granule positions; 0 when the codec is unknown
        int headerPacketsLeft = 0;
        quint32 lastSequence = 0; // of the last header page
        qint64 lastGranule = -1;
        bool audioSeen = false;
    };

    void beginLogical(QByteArrayView page, QByteArrayView body, int packets);
    Logical *logical(quint32 serial);
    void keepHeader(QByteArrayView page);

    QList<Logical> m_logicals;
    QByteArray m_headers;
    bool m_headersKept = true;
    bool m_linkHasAudio = false;
};
