#include "history/historywriter.h"

#include <QFile>
#include <QSaveFile>

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
    const QByteArray bytes = file.readAll();
    file.close();
    // The newest lines begin after the (limit + 1)-th line end from the back;
    // the last line end closes the file.
    qsizetype from = bytes.size() - 1;
    for (qsizetype kept = 0; kept < m_limit && from > 0; ++kept)
        from = bytes.lastIndexOf('\n', from - 1);
    const qsizetype start = from < 0 ? 0 : from + 1;
    QSaveFile out(m_path);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes.constData() + start, bytes.size() - start) < 0 ||
        !out.commit()) {
        report(out.errorString());
        return;
    }
    m_lines = std::min<qint64>(m_lines, m_limit);
}

void HistoryWriter::report(const QString &reason)
{
    if (!m_failing)
        emit failed(reason);
    m_failing = true;
}
