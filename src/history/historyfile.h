#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <deque>
#include <optional>

// One title seen on a station.
struct HistoryEntry
{
    qint64 time = 0; // milliseconds since the epoch
    QString station;
    QString title;

    bool operator==(const HistoryEntry &) const = default;
};

// The history file: one entry per line, "time<TAB>station<TAB>title", the time
// in milliseconds since the epoch. Backslash, tab, CR and LF are escaped, so
// any title stays on its line and a torn or foreign line is easy to tell.
namespace HistoryFile {

// A longer line is not an entry: titles are cut far below this when added.
constexpr qsizetype MaxLineBytes = 16 * 1024;

// The entry's line, ended by "\n".
QByteArray line(const HistoryEntry &entry);

// The entry a line (without its "\n") holds; nothing when it holds none.
std::optional<HistoryEntry> parse(QByteArrayView line);

struct Contents
{
    std::deque<HistoryEntry> entries; // the newest ones, oldest first
    qint64 goodLines = 0;
    qint64 brokenLines = 0;
    QString error; // why an existing file could not be read; empty otherwise
};

// Reads the file, keeping at most `limit` of the newest entries. Lines that
// hold no entry are counted, as is a last line that lacks its end. A missing
// file is an empty history.
Contents read(const QString &path, qsizetype limit);

// Replaces the file with these entries in one step. Empty on success, else why not.
QString write(const QString &path, const std::deque<HistoryEntry> &entries);

// Renames the file to "<path>.damaged-N" with the lowest N not taken, so that
// no earlier copy is ever replaced. The new path, or empty when it failed.
QString moveAside(const QString &path);

} // namespace HistoryFile
