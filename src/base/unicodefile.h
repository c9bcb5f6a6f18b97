#pragma once

#include <QByteArray>
#include <QString>

// Whole-file reads and writes. The catalogue goes through the byte operations,
// playlists read from disk through the 8-bit text read.
namespace ModUnicodeFile {

// Reads the whole file into buffer. With detectBom, a leading FF FE is skipped
// and the result is true; the file's last byte is then left unread, a
// long-standing quirk the catalogue depends on. Never fails: an unreadable
// file leaves the buffer as it was.
bool readBytes(const QString &path, QByteArray &buffer, bool detectBom);

// Replaces the file with buffer, preceded by FF FE when writeBom. The old file
// is deleted first, ignoring failure; a file its owner may not write counts as
// read-only and is kept. Opening and writing throw AppError on failure.
void writeBytes(const QString &path, const QByteArray &buffer, bool writeBom);

// Reads the whole file as 8-bit text in the local code page. False on any
// failure, with text unchanged.
bool readText(const QString &path, QString &text);

// A file whose permission bits forbid writing to its owner. Deliberately not
// the process's own access check, so that it holds for root as well.
bool isReadOnly(const QString &path);

} // namespace ModUnicodeFile
