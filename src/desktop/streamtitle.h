#pragma once

#include <QString>

// A stream title as stations send it, "Artist - Title", split at the first
// " - ". Without that separator the whole text is the title.
struct StreamTitle
{
    QString artist;
    QString title;

    static StreamTitle split(const QString &text);
};
