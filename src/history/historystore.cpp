#include "history/historystore.h"

#include "history/historywriter.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace {

// How far back a repeated title of the same station is looked for.
constexpr qsizetype RepeatWindow = 64;

QString cut(const QString &text)
{
    QString result = text.trimmed().left(HistoryStore::MaxTextLength);
    if (!result.isEmpty() && result.back().isHighSurrogate())
        result.chop(1);
    return result;
}

} // namespace

HistoryStore::HistoryStore(QString path, qsizetype limit, QObject *parent)
    : QObject(parent), m_path(std::move(path)), m_limit(std::max<qsizetype>(limit, 1))
{
}

HistoryStore::~HistoryStore()
{
    if (!m_writer)
        return;
    // Queued behind the appends still waiting, so they all reach the file.
    QMetaObject::invokeMethod(
        m_writer, [thread = &m_thread] { thread->quit(); }, Qt::QueuedConnection);
    m_thread.wait();
    delete m_writer;
}

QString HistoryStore::pathIn(const QString &dataFolder)
{
    return dataFolder + QStringLiteral("history.tsv");
}

QString HistoryStore::open()
{
    if (m_writer)
        return {};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    HistoryFile::Contents contents = HistoryFile::read(m_path, m_limit);
    QString message;
    qint64 linesInFile = contents.goodLines;
    if (!contents.error.isEmpty()) {
        message = tr("The history could not be read from %1: %2").arg(m_path, contents.error);
    } else if (const qint64 broken = contents.brokenLines) {
        const QString aside = HistoryFile::moveAside(m_path);
        if (aside.isEmpty()) {
            message = tr("Damaged lines in the history file %1: %2. It could not be moved aside and is kept "
                         "as it is.")
                          .arg(m_path)
                          .arg(broken);
        } else {
            message = tr("Damaged lines in the history file: %1. The file was kept as %2; the history goes "
                         "on with the readable entries (%3).")
                          .arg(broken)
                          .arg(aside)
                          .arg(contents.entries.size());
            const QString failure = HistoryFile::write(m_path, contents.entries);
            if (!failure.isEmpty())
                message += u'\n' + tr("The new history file could not be written: %1").arg(failure);
            linesInFile = qint64(contents.entries.size());
        }
    }
    m_entries = std::move(contents.entries);
    startWriter(linesInFile);
    return message;
}

bool HistoryStore::add(const QString &station, const QString &title)
{
    return add(station, title, QDateTime::currentMSecsSinceEpoch());
}

bool HistoryStore::add(const QString &station, const QString &title, qint64 time)
{
    HistoryEntry entry{time, cut(station), cut(title)};
    if (entry.title.isEmpty() || repeatsStation(entry.station, entry.title))
        return false;
    emit entryAboutToBeAdded();
    m_entries.push_back(entry);
    emit entryAdded();
    if (m_writer) {
        QMetaObject::invokeMethod(
            m_writer, [writer = m_writer, line = HistoryFile::line(entry)] { writer->append(line, 1); },
            Qt::QueuedConnection);
    }
    if (size() > m_limit) {
        const qsizetype extra = size() - m_limit;
        emit oldestAboutToBeDropped(extra);
        m_entries.erase(m_entries.begin(), m_entries.begin() + extra);
        emit oldestDropped();
    }
    return true;
}

QStringList HistoryStore::stations() const
{
    QSet<QString> names;
    for (const HistoryEntry &entry : m_entries)
        names.insert(entry.station);
    QStringList sorted(names.begin(), names.end());
    sorted.sort(Qt::CaseInsensitive);
    return sorted;
}

bool HistoryStore::repeatsStation(const QString &station, const QString &title) const
{
    const qsizetype oldest = std::max<qsizetype>(size() - RepeatWindow, 0);
    for (qsizetype i = size() - 1; i >= oldest; --i) {
        if (at(i).station == station)
            return at(i).title == title;
    }
    return false;
}

void HistoryStore::startWriter(qint64 linesInFile)
{
    m_writer = new HistoryWriter(m_path, m_limit, linesInFile);
    m_writer->moveToThread(&m_thread);
    connect(m_writer, &HistoryWriter::failed, this, [this](const QString &reason) {
        emit problem(tr("The history could not be saved to %1: %2").arg(m_path, reason));
    });
    m_thread.setObjectName(QStringLiteral("history writer"));
    m_thread.start(QThread::LowPriority);
    QMetaObject::invokeMethod(m_writer, &HistoryWriter::compactIfDue, Qt::QueuedConnection);
}
