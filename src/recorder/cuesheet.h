#pragma once

#include "recorder/streamformat.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

// The cue sheet of a recording kept in one file: "name.cue" beside
// "name.mp3", one track per title, each at the audio time (mm:ss:ff, 75
// frames a second) where the title begins in the file. The sheet is written
// whole again at every title through a temporary file, so a sheet on disk is
// always complete and a folder that fills up costs the sheet, never the
// recording.
class CueSheet
{
    Q_DECLARE_TR_FUNCTIONS(CueSheet)

public:
    // The most tracks a cue sheet can list.
    static constexpr int MaxTracks = 99;

    CueSheet(const QString &audioPath, StreamFormat format, const QString &station);

    const QString &path() const { return m_path; }
    qsizetype trackCount() const { return m_tracks.size(); }

    // A title begins at timeNs in the file's audio; the sheet is written again.
    // A title that begins in the same frame as the one before replaces it (that
    // one has no audio); a time before the last track's counts as the same.
    // Titles past MaxTracks are not listed. Returns false when the sheet could
    // not be written (error() says why); later writes try again.
    bool addTrack(const QString &streamTitle, qint64 timeNs);
    // The recording ended after endNs of audio: a last title that has no audio
    // left is dropped, and the sheet is written a last time.
    bool finish(qint64 endNs);

    // The sheet as it is written.
    QString text() const;
    const QString &error() const { return m_error; }

private:
    struct Track
    {
        QString artist;
        QString title;
        qint64 frame = 0; // in 1/75 s
    };

    bool write();

    QString m_path;
    QString m_fileLine;
    QString m_station;
    QList<Track> m_tracks;
    QString m_error;
};
