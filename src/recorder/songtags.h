#pragma once

#include <QDateTime>
#include <QString>

// A stream title as tags and cue sheets show it.
struct TitleParts
{
    QString artist;
    QString title;
};

// Text that is safe in a tag: control characters are removed (tabs and line
// breaks become blanks), as are unpaired surrogates; blanks at the ends go.
QString tagSafeText(const QString &text);

// Splits a stream title at its first " - " into artist and title; without
// that separator the whole text is the title. Each part is made safe, and a
// part that is only dashes and blanks is empty, so " - " gives neither.
TitleParts splitStreamTitle(const QString &streamTitle);

// What a song file's tags say.
struct SongTags
{
    QString artist;
    QString title;
    QString album;     // the station's name
    QDateTime date;    // when the recording began
    QString comment;   // the stream's address
    QString recording; // the RECORDING field: "complete", "partial", ...

    // Artist and title from a stream title, split as splitStreamTitle does.
    void setStreamTitle(const QString &streamTitle);
};
