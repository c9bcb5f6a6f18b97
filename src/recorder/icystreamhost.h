#pragma once

#include <QByteArrayView>
#include <QString>

// What the stream parser needs from the recorder window: the labels it reads
// and sets, the song-scan inputs and the output stage. The window implements
// it; tests use a recording implementation.
class IcyStreamHost
{
public:
    virtual ~IcyStreamHost() = default;

    // The title shown in lbSong: read to detect a change, set on a change.
    virtual QString ShownTitle() const = 0;
    virtual void ShowTitle(const QString &title) = 0;
    // lbStream: the station's own name from "icy-name:".
    virtual void ShowStreamText(const QString &text) = 0;
    // lbGenre.
    virtual void ShowGenre(const QString &genre) = 0;
    // The station's home address ("icy-url:") and the address from "StreamUrl".
    virtual void SetHyperlinkA(const QString &url) = 0;
    virtual void SetHyperlinkB(const QString &url) = 0;

    // txtScanSong: a title to wait for; empty when the scan is off.
    virtual QString ScanSongText() const = 0;
    // lblWaitScan's visibility.
    virtual void ShowWaitScan(bool visible) = 0;

    // The output stage (RecordingOutput in the window).
    virtual void SetWriteEnabled(bool enabled) = 0;
    virtual void WriteToDisk(QByteArrayView data, bool flush) = 0;
    virtual void NewSong(const QString &title) = 0;
    virtual bool IsFileOpen() const = 0;
    // The station sends no titles: uncheck chkSingleSong, remove "%SONG%" from
    // the file name and open the file, so the rest goes into one continuous file.
    virtual void SwitchToContinuous() = 0;
};
