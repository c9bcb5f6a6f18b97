#include "history/historywriter.h"

#include <QFile>
#include <QSaveFile>

namespace {

constexpr qint64 ChunkBytes = 1 << 20;

} // namespace

HistoryWriter::HistoryWriter(QString path, qsizetype limit, qint64 linesInFile)
    : m_path(std::move(path)), m_limit(limit), m_lines(linesInFile)
{
}

void HistoryWriter::append(const QByteArray &lines, qint64 count)
{
    // No fsync: a power cut may cost the last few titles, while a sync can
    // stall for seconds on a busy disk, once per song.
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        report(file.errorString());
        return;
    }
    if (file.write(lines) != lines.size() || !file.flush()) {
        report(file.errorString());
        return;
    }
    file.close();
    m_failing = false;
    m_lines += count;
    compactIfDue();
}

void HistoryWriter::compactIfDue()
{
    if (m_lines > m_limit + std::max<qsizetype>(m_limit / 10, 1))
        compact();
}

void HistoryWriter::compact()
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        report(file.errorString());
        return;
    }
    // Walks back from the end, a chunk at a time, to where the newest lines
    // begin: a file of any size costs one chunk of memory.
    qint64 start = -1;
    qint64 lineEnds = 0;
    for (qint64 chunkEnd = file.size(); chunkEnd > 0 && start < 0;) {
        const qint64 chunkStart = std::max<qint64>(chunkEnd - ChunkBytes, 0);
        file.seek(chunkStart);
        const QByteArray chunk = file.read(chunkEnd - chunkStart);
        for (qsizetype i = chunk.size() - 1; i >= 0 && start < 0; --i) {
            if (chunk[i] == '\n' && ++lineEnds > m_limit)
                start = chunkStart + i + 1;
        }
        chunkEnd = chunkStart;
    }
    if (start < 0) {
        m_lines = lineEnds;
        return;
    }
    QSaveFile out(m_path);
    bool written = out.open(QIODevice::WriteOnly) && file.seek(start);
    while (written && !file.atEnd()) {
        const QByteArray chunk = file.read(ChunkBytes);
        written = !chunk.isEmpty() && out.write(chunk) == chunk.size();
    }
    if (!written || !out.commit()) {
        report(out.errorString());
        return;
    }
    m_lines = m_limit;
}

void HistoryWriter::report(const QString &reason)
{
    if (!m_failing)
        emit failed(reason);
    m_failing = true;
}
