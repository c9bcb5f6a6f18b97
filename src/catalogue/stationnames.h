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

// The same, cut to 30 characters: names inside recorded file names.
QString cleanShortName(const QString &text);

// Removes blanks (spaces only, not tabs or line ends) at both ends.
QString trimBlanks(const QString &text);
QStringView trimBlanks(QStringView text);

} // namespace StationNames
