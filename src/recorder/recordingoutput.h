#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QFile>
#include <QString>
#include <QStringList>

// Expands a file-name template: a leading ".\" (and, off Windows, "./") goes
// into the recordings folder, which is created; every "%STATION%" becomes the
// station name as it stands, "%DATE%" the date "yyyy-MM-dd", "%TIME%" the time
// "HH-mm" (case-sensitive). "%SONG%" is left in place. A template that does not
// begin with "." is used as it stands.
QString BuildFileName(const QString &templ, const QString &station, const QDateTime &now,
                      const QString &recordingsFolder);

// The recorder's output stage: one open file, the write cache in front of it
// and the counters the monitor panel shows. Failures never throw: the first
// file that cannot be opened or written is kept in error (the recorder stops
// the recording and says why); bytes already written stay.
class RecordingOutput
{
public:
    // The cache is written out once it holds more than this many bytes.
    static constexpr qsizetype CacheLimit = 64000;

    RecordingOutput();
    RecordingOutput(const RecordingOutput &) = delete;
    RecordingOutput &operator=(const RecordingOutput &) = delete;

    const QString &FileName() const { return m_fileName; }
    void setFileName(const QString &name) { m_fileName = name; }
    // Kept across recordings: a new recording does not reset it.
    bool WriteEnabled() const { return m_writeEnabled; }
    void setWriteEnabled(bool enabled) { m_writeEnabled = enabled; }
    const QByteArray &DiskCache() const { return m_cache; }
    bool isFileOpen() const { return m_file.isOpen(); }

    // Statistics: cache flushes that reached a file and the bytes they wrote.
    // Block writes are 32 bits so a recording of days cannot overflow them.
    qint32 blockWrites() const { return m_blockWrites; }
    double bytesWritten() const { return m_bytesWritten; }
    // The files opened since the counters were reset, each once.
    const QStringList &files() const { return m_files; }
    // What a new recording starts from: both counters zero, no files, no error.
    void resetCounters();
    // Why the output cannot go on: the first open or write that failed; empty while none has.
    const QString &error() const { return m_error; }

    // Closes any open file, then creates or truncates FileName. Returns false
    // (and sets error) when it cannot be opened; no file is open then.
    bool OpenFile();
    // Closes the file; the cache is not flushed (callers flush first).
    void CloseFile();

    // Appends to the cache unless writing is disabled; past CacheLimit bytes,
    // or when flush is set, the whole cache goes to the open file in one write
    // and the cache is emptied - also when no file is open (those bytes are lost).
    void WriteToDisk(QByteArrayView data, bool flush);

    // A title change. Single-song mode: the cleaned title (30 characters)
    // replaces every "%SONG%" in freshName (a BuildFileName made now), which
    // becomes FileName and is opened, closing the previous file. Continuous
    // mode: "%SONG%" is removed from FileName and the file stays open.
    void NewSong(const QString &title, bool singleSong, const QString &freshName);

    // One file for the whole recording: its name does without "%SONG%".
    void removeSongPlaceholder();
    // The station sends no titles: "%SONG%" is removed and the file opened.
    void switchToContinuous();

private:
    void writeBlock(QByteArrayView block);
    void fail(const QString &message);

    QString m_error;
    QString m_fileName;
    QStringList m_files;
    QFile m_file;
    QByteArray m_cache;
    bool m_writeEnabled = false;
    qint32 m_blockWrites = 0;
    double m_bytesWritten = 0;
};
