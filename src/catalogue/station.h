#pragma once

#include <QString>

// One catalogue entry: twelve stored fields in file order, then the
// never-stored Deleted mark.
struct Station
{
    QString Name;
    QString Genre;
    QString BitRate;
    QString Format;
    QString Category;
    QString OutputFile;
    bool SingleSong = false;
    qint32 Rating = 0;
    QString LastDate;
    QString CallSign;
    QString StreamURL;
    QString InfoUrl;
    bool Deleted = false;

    // A station as an import creates it: mp3, one file per song, the default template.
    static Station newStation();

    static inline const QString defaultOutputFile = QStringLiteral(".\\%STATION%_%SONG%_%DATE%_%TIME%.mp3");
};
