#pragma once

#include <QByteArray>
#include <QString>

// A skin file: the signature line "URF 1", "Key: value" header lines, a line
// "---", then a Qt style sheet. The program reads the header to describe a
// skin; the engine reads the sheet to apply it.
struct UrfSkin
{
    // The outcome of reading a file. The numbers are what the engine's
    // SkinStart returns, so they must not change.
    enum Status
    {
        Ok = 0,
        Unreadable = 2, // missing, a folder, or no permission
        TooLarge = 3,   // over maxBytes
        Empty = 4,      // nothing but blanks
        Binary = 5,     // not UTF-8 text
        NotASkin = 6,   // no signature, no name or no "---" line
        BadSheet = 7,   // an empty style sheet (the engine also refuses one Qt cannot parse)
    };

    // Larger files are refused before they are read in full.
    static constexpr qint64 maxBytes = 1024 * 1024;

    // The theme a skin names in its "Theme:" line; -1 when it names none.
    static constexpr int NoTheme = -1;

    Status status = Unreadable;
    QString name;
    QString author;
    int theme = NoTheme;
    QString sheet;

    static UrfSkin read(const QString &path);
    static UrfSkin parse(const QByteArray &bytes);
    // "Pale Blue" for 0, "Black Night" for 1, empty for any other index.
    static QString themeName(int theme);
};
