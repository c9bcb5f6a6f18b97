#include "recorder/framescanner.h"

#include "recorder/adtsframescanner.h"
#include "recorder/mp3framescanner.h"
#include "recorder/oggpagescanner.h"

FrameScanner::~FrameScanner() = default;

std::unique_ptr<FrameScanner> FrameScanner::create(StreamFormat format)
{
    switch (format) {
    case StreamFormat::Aac:
        return std::make_unique<AdtsFrameScanner>();
    case StreamFormat::Ogg:
        return std::make_unique<OggPageScanner>();
    case StreamFormat::Mp3:
        break;
    }
    return std::make_unique<Mp3FrameScanner>();
}

QList<StreamPiece> FrameScanner::push(QByteArrayView data)
{
    m_held.append(data);
    QList<StreamPiece> pieces;
    scan(pieces, Ending::None);
    return pieces;
}

QList<StreamPiece> FrameScanner::takeComplete()
{
    QList<StreamPiece> pieces;
    scan(pieces, Ending::Complete);
    return pieces;
}

QList<StreamPiece> FrameScanner::finish()
{
    QList<StreamPiece> pieces = takeComplete();
    if (!m_held.isEmpty())
        emitPiece(pieces, StreamPiece::Kind::Other, 0, m_held.size());
    m_offset += m_held.size();
    m_held.clear();
    m_inSync = false;
    return pieces;
}

void FrameScanner::describe(const Header &header, StreamPiece &piece)
{
    piece.kind = StreamPiece::Kind::Frame;
    piece.durationNs = header.durationNs;
    piece.canBegin = true;
}

void FrameScanner::scan(QList<StreamPiece> &pieces, Ending ending)
{
    const QByteArrayView all(m_held);
    qsizetype pos = 0;
    qsizetype otherFrom = -1;
    while (pos < all.size()) {
        Header header;
        Verdict verdict = readHeader(all.sliced(pos), header);
        if (verdict == Verdict::NeedMore)
            break;
        if (verdict == Verdict::Frame && m_inSync && header.key != m_key)
            verdict = Verdict::NotFrame;
        if (verdict == Verdict::Frame)
            verdict = confirm(pos, header);
        if (verdict == Verdict::NeedMore) {
            // Only a file's end takes a whole frame without its successor.
            const bool whole = pos + header.length <= all.size();
            if (ending == Ending::None || !m_inSync || !whole)
                break;
            verdict = Verdict::Frame;
        }
        if (verdict == Verdict::Frame) {
            if (otherFrom >= 0)
                emitPiece(pieces, StreamPiece::Kind::Other, otherFrom, pos);
            otherFrom = -1;
            m_inSync = true;
            m_key = header.key;
            StreamPiece piece;
            piece.offset = m_offset + pos;
            piece.bytes = all.sliced(pos, header.length).toByteArray();
            describe(header, piece);
            m_durationNs += piece.durationNs;
            pieces.append(std::move(piece));
            pos += header.length;
            continue;
        }
        m_inSync = false;
        if (otherFrom < 0)
            otherFrom = pos;
        pos = findSync(all, pos + 1);
    }
    if (otherFrom >= 0)
        emitPiece(pieces, StreamPiece::Kind::Other, otherFrom, pos);
    m_offset += pos;
    m_held.remove(0, pos);
}

FrameScanner::Verdict FrameScanner::confirm(qsizetype pos, const Header &first) const
{
    const QByteArrayView all(m_held);
    qsizetype next = pos + first.length;
    if (next > all.size())
        return Verdict::NeedMore;
    for (int left = confirmationsNeeded(m_inSync); left > 0; --left) {
        Header header;
        const Verdict verdict = readHeader(all.sliced(next), header);
        if (verdict != Verdict::Frame)
            return verdict;
        if (header.key != first.key)
            return Verdict::NotFrame;
        next += header.length;
        if (left > 1 && next > all.size())
            return Verdict::NeedMore;
    }
    return Verdict::Frame;
}

void FrameScanner::emitPiece(QList<StreamPiece> &pieces, StreamPiece::Kind kind, qsizetype from, qsizetype to)
{
    StreamPiece piece;
    piece.kind = kind;
    piece.offset = m_offset + from;
    piece.bytes = QByteArrayView(m_held).sliced(from, to - from).toByteArray();
    pieces.append(std::move(piece));
}
