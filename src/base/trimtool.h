#pragma once

#include <QString>

// The external trimming tool's command line, with "%APP%" for the
// installation folder and "%MP3FILE%" for the recording.
struct TrimTool
{
    static inline const QString defaultCommand =
        QStringLiteral("%APP%\\mp3Tools\\mp3DirectCut\\mp3DirectCut.exe %MP3FILE%");

    QString command;

    // An empty command becomes the default; anything else stays.
    void applyDefault()
    {
        if (command.isEmpty())
            command = defaultCommand;
    }
};
