#include "recorder/songframes.h"

#include <utility>

SongFrames::SongFrames(StreamFormat format, qsizetype history)
    : m_scanner(FrameScanner::create(format)), m_history(history)
{
}

SongFrames::~SongFrames() = default;

QByteArray SongFrames::push(QByteArrayView data)
{
    // The one copy of the stream: the held bytes and the new ones, in an
    // array of their exact size, which the file and the history then share.
    QByteArray joined;
    joined.reserve(m_undecided.size() + data.size());
    joined.append(m_undecided).append(data);
    m_undecided = std::move(joined);
    QByteArray out;
    m_marks.clear();
    take(m_scanner->mark(m_undecided, m_marks), out);
    return out;
}

SongFrames::Cut SongFrames::cut(qint64 from)
{
    Cut result{endFile(), {}};
    m_open = true;
    m_seeking = true;
    m_from = from;
    m_search.clear();
    m_fileDurationNs = 0;
    auto chunk = m_chunks.cbegin();
    for (const FrameMark &mark : m_kept) {
        while (chunk->end() <= mark.offset)
            ++chunk;
        route(mark, QByteArrayView(chunk->bytes).sliced(mark.offset - chunk->offset, mark.length),
              result.head);
    }
    return result;
}

QByteArray SongFrames::endFile()
{
    QByteArray out;
    m_marks.clear();
    take(m_scanner->markComplete(m_undecided, m_marks), out);
    if (m_open) {
        if (m_seeking)
            out += giveUpSearch();
        // Out of sync, what the scanner holds is no frame yet: a stream it
        // cannot read ends its file with every byte, as it came.
        if (!m_scanner->inSync())
            out += m_undecided;
    }
    m_open = false;
    return out;
}

QByteArray SongFrames::finish()
{
    QByteArray out;
    m_marks.clear();
    take(m_scanner->markComplete(m_undecided, m_marks), out);
    // In sync, what remains is a frame the end broke off; otherwise it is
    // bytes of a stream that is not audio, which pass.
    const bool brokenFrame = m_scanner->inSync();
    m_marks.clear();
    const qsizetype rest = m_scanner->markFinish(m_undecided, m_marks);
    if (brokenFrame)
        m_undecided.clear();
    else
        take(rest, out);
    if (m_open && m_seeking)
        out += giveUpSearch();
    m_open = false;
    return out;
}

qint64 SongFrames::position() const
{
    return m_scanner->decided() + m_undecided.size();
}

qint64 SongFrames::decided() const
{
    return m_scanner->decided();
}

qint64 SongFrames::timeAt(qint64 offset) const
{
    qint64 time = m_scanner->durationNs();
    for (auto mark = m_kept.rbegin(); mark != m_kept.rend() && mark->offset >= offset; ++mark)
        time -= mark->durationNs;
    return time;
}

qsizetype SongFrames::heldBytes() const
{
    return m_chunkBytes + m_search.size() + m_undecided.size();
}

void SongFrames::take(qsizetype decided, QByteArray &out)
{
    if (decided == 0)
        return;
    Chunk chunk{m_scanner->decided() - decided, {}};
    const qsizetype rest = m_undecided.size() - decided;
    if (rest <= decided) {
        // Mostly decided: the array becomes the chunk, the short rest moves out.
        chunk.bytes = std::exchange(m_undecided, m_undecided.sliced(decided));
        chunk.bytes.truncate(decided);
    } else {
        chunk.bytes = m_undecided.first(decided);
        m_undecided.remove(0, decided);
    }
    if (m_open && !m_seeking) {
        // The file is under way: it gets every byte decided, as they lie.
        if (out.isEmpty())
            out = chunk.bytes;
        else
            out += chunk.bytes;
        for (const FrameMark &mark : m_marks)
            m_fileDurationNs += mark.durationNs;
    } else {
        const QByteArrayView bytes(chunk.bytes);
        for (const FrameMark &mark : m_marks)
            route(mark, bytes.sliced(mark.offset - chunk.offset, mark.length), out);
    }
    for (FrameMark &mark : m_marks)
        m_kept.push_back(std::move(mark));
    keep(std::move(chunk));
}

void SongFrames::keep(Chunk &&chunk)
{
    const qint64 end = chunk.end();
    m_chunkBytes += chunk.bytes.size();
    m_chunks.push_back(std::move(chunk));
    while (!m_kept.empty() && m_kept.front().end() <= end - m_history)
        m_kept.pop_front();
    const qint64 needed = m_kept.empty() ? end : m_kept.front().offset;
    while (!m_chunks.empty() && m_chunks.front().end() <= needed) {
        m_chunkBytes -= m_chunks.front().bytes.size();
        m_chunks.pop_front();
    }
    // A chunk the history has mostly left behind gives up its old bytes,
    // unless they are few: that keeps memory near the history without
    // copying what small pushes share with it.
    if (m_chunks.empty())
        return;
    Chunk &front = m_chunks.front();
    const qsizetype unneeded = needed - front.offset;
    if (unneeded > m_history / 8) {
        front.bytes = front.bytes.sliced(unneeded);
        front.offset = needed;
        m_chunkBytes -= unneeded;
    }
}

void SongFrames::route(const FrameMark &mark, QByteArrayView bytes, QByteArray &out)
{
    if (!m_open)
        return;
    if (m_seeking) {
        if (mark.end() <= m_from)
            return;
        if (mark.offset < m_from) {
            // A frame that begins before the file is the song before's; bytes
            // that are no frame may be split anywhere.
            if (mark.kind != StreamPiece::Kind::Other)
                return;
            bytes = bytes.sliced(m_from - mark.offset);
        }
        if (mark.kind != StreamPiece::Kind::Frame || !mark.canBegin) {
            m_search += bytes;
            if (m_search.size() > SearchLimit)
                out += giveUpSearch();
            return;
        }
        // The first frame: what was searched through belongs to the song before.
        m_search.clear();
        m_seeking = false;
        out += mark.headers;
    }
    out += bytes;
    m_fileDurationNs += mark.durationNs;
}

QByteArray SongFrames::giveUpSearch()
{
    m_seeking = false;
    return std::exchange(m_search, {});
}
