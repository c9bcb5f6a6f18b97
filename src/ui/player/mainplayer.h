#pragma once

#include "player/playertexts.h"
#include "player/stationplayer.h"

#include "base/tracehook.h"

#include <QObject>

#include <functional>

class FileDL;
class MediaPlayer;
struct Station;
class ucPlayBar;

// The main window's player: plays the station of the grid's current row in
// the hidden player wmp1, driven by the play bar, whose caption is its only
// status display. Playlist addresses are first resolved through FileDLMain.
class MainPlayer : public QObject, public StationPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainPlayer)

public:
    static inline const QString TagPlaying = QStringLiteral("PLSPLAYMAIN");

    // currentStation gives the station of the grid's current row, or nullptr
    // when there is no current row.
    MainPlayer(const PlayerTexts &texts, TraceHook trace, MediaPlayer &wmp1, ucPlayBar &playBar,
               std::function<const Station *()> currentStation, QObject *parent = nullptr);

    void PlayKey(const QString &key) override;
    void ShowState(const QString &state) override;
    void StopPlayback() override;
    int PlayState() const override;
    bool Scanning() const override { return m_scanning; }
    void SetScanning(bool scanning) override { m_scanning = scanning; }
    void Silence() override;

private:
    // True when something was started (a stream, or the fetch of its playlist).
    bool StartCurrentStation();
    void FetchPlaylist(const QString &address);
    void cancelFetch();

    void wmp1_PlayStateChange(int state);
    void FileDLMain_DownloadComplete(const QString &key, const QByteArray &body);
    void FileDLMain_DownloadError(const QString &key, int statusCode, const QString &statusText);

    const PlayerTexts m_texts;
    TraceHook m_trace;
    MediaPlayer &wmp1;
    ucPlayBar &ucPlayBar1;
    std::function<const Station *()> m_currentStation;
    FileDL *FileDLMain;

    QString m_playingAddress;
    QString m_playingName;
    bool m_scanning = false;
    bool m_fetching = false; // the playlist of the station starting is on its way
};
