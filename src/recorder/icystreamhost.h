#pragma once

#include <QByteArrayView>
#include <QString>

// What the stream parser needs from the recording it serves: the title it
// reads and sets, what it reports of the station, the song-scan input and the
// output stage. StreamRecorder implements it; tests use a recording
// implementation.
class IcyStreamHost
{
public:
    virtual ~IcyStreamHost() = default;

    // The current title (lbSong): read to detect a change, set on a change.
    virtual QString shownTitle() const = 0;
    virtual void showTitle(const QString &title) = 0;
    // What a window shows of the station; a host without one shows nothing.
    // The station's own name from "icy-name:" (lbStream).
    virtual void showStreamText(const QString &) {}
    // "icy-genre:" (lbGenre).
    virtual void showGenre(const QString &) {}
    // The station's home address ("icy-url:") and the address from "StreamUrl".
    virtual void setHyperlinkA(const QString &) {}
    virtual void setHyperlinkB(const QString &) {}

    // A title to wait for (txtScanSong); empty when the scan is off.
    virtual QString scanSongText() const { return {}; }
    // Whether writing waits for that title (lblWaitScan).
    virtual void showWaitScan(bool) {}

    // The output stage (RecordingOutput).
    virtual void setWriteEnabled(bool enabled) = 0;
    virtual void WriteToDisk(QByteArrayView data, bool flush) = 0;
    virtual void NewSong(const QString &title) = 0;
    virtual bool isFileOpen() const = 0;
    // The station sends no titles: single-song mode off (chkSingleSong),
    // "%SONG%" removed from the file name and the file opened, so the rest goes
    // into one continuous file.
    virtual void switchToContinuous() = 0;
};
