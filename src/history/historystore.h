#pragma once

#include "history/historyfile.h"

#include <QObject>
#include <QStringList>
#include <QThread>

#include <deque>

class HistoryWriter;

// The titles that played, newest last, bounded to `limit` entries, kept in
// memory for the History window and appended to a file in the data folder.
class HistoryStore : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype DefaultLimit = 100000;
    // Longer station names and titles are cut; no station sends more.
    static constexpr qsizetype MaxTextLength = 1000;

    explicit HistoryStore(QString path, qsizetype limit = DefaultLimit, QObject *parent = nullptr);
    // Waits for the titles still on their way to the file.
    ~HistoryStore() override;
    Q_DISABLE_COPY_MOVE(HistoryStore)

    // The history file in the program's data folder (given with its trailing "/").
    static QString pathIn(const QString &dataFolder);

    // Reads the file and starts writing to it; call it once, before adding.
    // A file with damaged lines is moved aside and replaced by its readable
    // entries. Returns what the user should be told, empty when all went well.
    QString open();

    // Records a title seen now, or at `time` (milliseconds since the epoch).
    // Empty titles are ignored, and so is a title that repeats the newest
    // entry of its station (a station playing and recording at once, or
    // sending its title again). True when an entry was added.
    bool add(const QString &station, const QString &title);
    bool add(const QString &station, const QString &title, qint64 time);

    qsizetype size() const { return qsizetype(m_entries.size()); }
    // Oldest first.
    const HistoryEntry &at(qsizetype index) const { return m_entries[size_t(index)]; }
    // Every station in the history, sorted, each once.
    QStringList stations() const;

signals:
    // Around each change, for an item model over the store.
    void entryAboutToBeAdded();
    void entryAdded();
    void oldestAboutToBeDropped(qsizetype count);
    void oldestDropped();
    // The file could not be written; the entries stay in memory.
    void problem(const QString &message);

private:
    bool repeatsStation(const QString &station, const QString &title) const;
    void startWriter(qint64 linesInFile);

    QString m_path;
    qsizetype m_limit;
    std::deque<HistoryEntry> m_entries;
    QThread m_thread;
    HistoryWriter *m_writer = nullptr;
};
