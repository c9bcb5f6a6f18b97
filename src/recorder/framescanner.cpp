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
    std::vector<FrameMark> marks;
    return cutHeld(marks, scan(m_held, marks, Ending::None));
}

QList<StreamPiece> FrameScanner::takeComplete()
{
    std::vector<FrameMark> marks;
    return cutHeld(marks, scan(m_held, marks, Ending::Complete));
}

QList<StreamPiece> FrameScanner::finish()
{
    std::vector<FrameMark> marks;
    return cutHeld(marks, finishScan(m_held, marks));
}

qsizetype FrameScanner::mark(QByteArrayView undecided, std::vector<FrameMark> &marks)
{
    return scan(undecided, marks, Ending::None);
}

qsizetype FrameScanner::markComplete(QByteArrayView undecided, std::vector<FrameMark> &marks)
{
    return scan(undecided, marks, Ending::Complete);
}

qsizetype FrameScanner::markFinish(QByteArrayView undecided, std::vector<FrameMark> &marks)
{
    return finishScan(undecided, marks);
}

void FrameScanner::describe(const Header &header, QByteArrayView, FrameMark &mark)
{
    mark.kind = StreamPiece::Kind::Frame;
    mark.durationNs = header.durationNs;
    mark.canBegin = true;
}

qsizetype FrameScanner::scan(QByteArrayView all, std::vector<FrameMark> &marks, Ending ending)
{
    qsizetype pos = 0;
    qsizetype otherFrom = -1;
    // The header at pos, when confirming the frame before it has read it already.
    Header known;
    bool isKnown = false;
    while (pos < all.size()) {
        Header header;
        Verdict verdict = Verdict::Frame;
        if (isKnown)
            header = known;
        else
            verdict = readHeader(all.sliced(pos), header);
        isKnown = false;
        if (verdict == Verdict::NeedMore)
            break;
        if (verdict == Verdict::Frame && m_inSync && header.key != m_key)
            verdict = Verdict::NotFrame;
        if (verdict == Verdict::Frame)
            verdict = confirm(all, pos, header, known, isKnown);
        if (verdict == Verdict::NeedMore) {
            // Only a file's end takes a whole frame without its successor.
            const bool whole = pos + header.length <= all.size();
            if (ending == Ending::None || !m_inSync || !whole)
                break;
            verdict = Verdict::Frame;
        }
        if (verdict == Verdict::Frame) {
            if (otherFrom >= 0)
                addOther(marks, otherFrom, pos);
            otherFrom = -1;
            m_inSync = true;
            m_key = header.key;
            FrameMark &frame = marks.emplace_back();
            frame.offset = m_offset + pos;
            frame.length = header.length;
            describe(header, all.sliced(pos, header.length), frame);
            m_durationNs += frame.durationNs;
            pos += header.length;
            continue;
        }
        isKnown = false;
        m_inSync = false;
        if (otherFrom < 0)
            otherFrom = pos;
        pos = findSync(all, pos + 1);
    }
    if (otherFrom >= 0)
        addOther(marks, otherFrom, pos);
    m_offset += pos;
    return pos;
}

qsizetype FrameScanner::finishScan(QByteArrayView all, std::vector<FrameMark> &marks)
{
    const qsizetype complete = scan(all, marks, Ending::Complete);
    if (complete < all.size()) {
        FrameMark &rest = marks.emplace_back();
        rest.offset = m_offset;
        rest.length = all.size() - complete;
    }
    m_offset += all.size() - complete;
    m_inSync = false;
    return all.size();
}

FrameScanner::Verdict FrameScanner::confirm(QByteArrayView all, qsizetype pos, const Header &first,
                                            Header &next, bool &nextKnown) const
{
    qsizetype at = pos + first.length;
    if (at > all.size())
        return Verdict::NeedMore;
    for (int left = confirmationsNeeded(m_inSync); left > 0; --left) {
        Header header;
        const Verdict verdict = readHeader(all.sliced(at), header);
        if (verdict != Verdict::Frame)
            return verdict;
        if (header.key != first.key)
            return Verdict::NotFrame;
        if (at == pos + first.length) {
            next = header;
            nextKnown = true;
        }
        at += header.length;
        if (left > 1 && at > all.size())
            return Verdict::NeedMore;
    }
    return Verdict::Frame;
}

void FrameScanner::addOther(std::vector<FrameMark> &marks, qsizetype from, qsizetype to) const
{
    FrameMark &other = marks.emplace_back();
    other.offset = m_offset + from;
    other.length = to - from;
}

QList<StreamPiece> FrameScanner::cutHeld(const std::vector<FrameMark> &marks, qsizetype decided)
{
    const qint64 base = m_offset - decided;
    QList<StreamPiece> pieces;
    pieces.reserve(qsizetype(marks.size()));
    for (const FrameMark &mark : marks) {
        StreamPiece &piece = pieces.emplace_back();
        piece.kind = mark.kind;
        piece.offset = mark.offset;
        piece.bytes = QByteArrayView(m_held).sliced(mark.offset - base, mark.length).toByteArray();
        piece.durationNs = mark.durationNs;
        piece.canBegin = mark.canBegin;
        piece.headers = mark.headers;
    }
    m_held.remove(0, decided);
    return pieces;
}
