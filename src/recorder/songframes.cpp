#include "recorder/songframes.h"

#include <utility>

SongFrames::SongFrames(StreamFormat format, qsizetype history)
    : m_scanner(FrameScanner::create(format)), m_history(history)
{
}

SongFrames::~SongFrames() = default;

QByteArray SongFrames::push(QByteArrayView data)
{
    QByteArray out;
    take(m_scanner->push(data), out);
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
    for (const StreamPiece &piece : m_kept)
        route(piece, result.head);
    return result;
}

QByteArray SongFrames::endFile()
{
    QByteArray out;
    take(m_scanner->takeComplete(), out);
    if (m_open) {
        if (m_seeking)
            out += giveUpSearch();
        // Out of sync, what the scanner holds is no frame yet: a stream it
        // cannot read ends its file with every byte, as it came.
        if (!m_scanner->inSync())
            out += m_scanner->held();
    }
    m_open = false;
    return out;
}

QByteArray SongFrames::finish()
{
    QByteArray out;
    take(m_scanner->takeComplete(), out);
    // In sync, what remains is a frame the end broke off; otherwise it is
    // bytes of a stream that is not audio, which pass.
    const bool brokenFrame = m_scanner->inSync();
    QList<StreamPiece> rest = m_scanner->finish();
    if (!brokenFrame)
        take(std::move(rest), out);
    if (m_open && m_seeking)
        out += giveUpSearch();
    m_open = false;
    return out;
}

qint64 SongFrames::position() const
{
    return m_scanner->position();
}

qint64 SongFrames::decided() const
{
    return m_scanner->position() - m_scanner->heldBytes();
}

qint64 SongFrames::timeAt(qint64 offset) const
{
    qint64 time = m_scanner->durationNs();
    for (auto piece = m_kept.rbegin(); piece != m_kept.rend() && piece->offset >= offset; ++piece)
        time -= piece->durationNs;
    return time;
}

qsizetype SongFrames::heldBytes() const
{
    return m_keptBytes + m_search.size() + m_scanner->heldBytes();
}

void SongFrames::take(QList<StreamPiece> pieces, QByteArray &out)
{
    for (StreamPiece &piece : pieces) {
        route(piece, out);
        keep(std::move(piece));
    }
}

void SongFrames::keep(StreamPiece &&piece)
{
    const qint64 end = piece.end();
    m_keptBytes += piece.bytes.size();
    m_kept.push_back(std::move(piece));
    while (!m_kept.empty() && m_kept.front().end() <= end - m_history) {
        m_keptBytes -= m_kept.front().bytes.size();
        m_kept.pop_front();
    }
}

void SongFrames::route(const StreamPiece &piece, QByteArray &out)
{
    if (!m_open)
        return;
    if (m_seeking) {
        if (piece.end() <= m_from)
            return;
        QByteArrayView bytes(piece.bytes);
        if (piece.offset < m_from) {
            // A frame that begins before the file is the song before's; bytes
            // that are no frame may be split anywhere.
            if (piece.kind != StreamPiece::Kind::Other)
                return;
            bytes = bytes.sliced(m_from - piece.offset);
        }
        if (piece.kind != StreamPiece::Kind::Frame || !piece.canBegin) {
            m_search += bytes;
            if (m_search.size() > SearchLimit)
                out += giveUpSearch();
            return;
        }
        // The first frame: what was searched through belongs to the song before.
        m_search.clear();
        m_seeking = false;
        out += piece.headers;
    }
    out += piece.bytes;
    m_fileDurationNs += piece.durationNs;
}

QByteArray SongFrames::giveUpSearch()
{
    m_seeking = false;
    return std::exchange(m_search, {});
}
