#pragma once

#include "recorder/songfileoptions.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QCoreApplication>
#include <QFile>
#include <QString>

// Writes a recording's files, one at a time, through a write cache. No file is
// ever overwritten unless the user agreed to it: a name that is taken gets
// " (2)", " (3)", ... before its extension, and so does a file another
// recording holds open (an advisory lock, in this process or another). Failures never throw: the first
// file that cannot be made or written is kept in error() and nothing more goes
// out; bytes already written stay. It also puts a closed partial song where
// the settings say.
class SongWriter
{
    Q_DECLARE_TR_FUNCTIONS(SongWriter)

public:
    // The cache is written out once it holds more than this many bytes.
    static constexpr qsizetype CacheLimit = 64000;
    // Where partial songs move to, beside the song files.
    static inline const QString IncompleteFolder = QStringLiteral("incomplete");

    SongWriter();
    SongWriter(const SongWriter &) = delete;
    SongWriter &operator=(const SongWriter &) = delete;

    // Closes the open file and makes a new one at path; an existing file of
    // that name is replaced only when replace is set. False when no file could
    // be made (error() says why); none is open then.
    bool open(const QString &path, bool replace);
    bool isOpen() const { return m_file.isOpen(); }
    // The name of the file open, or of the last one.
    QString fileName() const { return m_file.fileName(); }

    // Appends to the cache; past CacheLimit the cache goes to the file in one write.
    void write(QByteArrayView data);
    // Writes the cache out now.
    void flush();
    // Flushes and closes the file.
    void close();

    // The closed file holds part of a song: keeps it, moves it into the
    // folder IncompleteFolder beside it (under a free name there) or deletes
    // it; fileName() then names where it went. Returns why that failed, empty
    // when it did not.
    QString settlePartial(SongFileOptions::PartialSongs choice);

    const QByteArray &cache() const { return m_cache; }
    // Statistics: cache flushes that reached a file and the bytes they wrote.
    qint32 blockWrites() const { return m_blockWrites; }
    double bytesWritten() const { return m_bytesWritten; }
    const QString &error() const { return m_error; }
    // What a new recording starts from: both counters zero, no error.
    void resetCounters();
    // Keeps message as the error, unless one is kept already: nothing more goes out.
    void fail(const QString &message);

private:
    void writeBlock(QByteArrayView block);

    QFile m_file;
    QByteArray m_cache;
    QString m_error;
    qint32 m_blockWrites = 0;
    double m_bytesWritten = 0;
};

// path with " (number)" before the extension of its file name: "/a/b.c/x.mp3"
// and 2 give "/a/b.c/x (2).mp3"; a name without an extension gets it at the end.
QString numberedFileName(const QString &path, int number);
