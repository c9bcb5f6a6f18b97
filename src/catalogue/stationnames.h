#pragma once

#include <QString>
#include <QStringView>

// Making text safe for file names.
namespace StationNames {

// Removes "/", "\", ":", "*", "?", "''" (two apostrophes; a single one stays),
// "<", ">" and "|", in that order.
void stripFileNameChars(QString &text);

// Trimmed of blanks, stripped, cut to 60 characters.
QString cleanName(const QString &text);

// A station name or a title as one part of a file name, cut to limit
// characters: control characters go (tabs and line breaks become blanks),
// then what stripFileNameChars removes, then leading dots, so that no part can
// name another folder, hide itself or be ".."; blanks are trimmed at both
// ends. What is left empty becomes "_".
QString fileNamePart(const QString &text, qsizetype limit);

// fileNamePart cut to 30 characters: titles inside recorded file names.
QString cleanShortName(const QString &text);

// Tabs and line breaks become blanks, every other control character (C0,
// DEL and C1) goes: what a title or a name may show.
QString withoutControlChars(QStringView text);

// Removes blanks (spaces only, not tabs or line ends) at both ends.
QString trimBlanks(const QString &text);
QStringView trimBlanks(QStringView text);

} // namespace StationNames
