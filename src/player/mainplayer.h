#pragma once

#include "player/playertexts.h"
#include "player/stationplayer.h"

#include "base/tracehook.h"

#include <QObject>
#include <QTimer>

#include <functional>

class FileDL;
class MediaPlayer;
class StreamProbe;
struct ProbeReport;
struct Station;

// The main window's player: plays the station of the grid's current row in
// wmp1, which the window keeps out of sight. It takes the play bar's keys and
// volume, and tells the bar what to show: the caption (the player's only
// status display), the look and the stream a playlist resolved to. Playlist
// addresses are first resolved through FileDLMain. A station that fails, or
// does not play within the start limit, is stopped, and the caption says why
// once a probe has asked its address what it sends.
class MainPlayer : public QObject, public StationPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainPlayer)

public:
    static inline const QString TagPlaying = QStringLiteral("PLSPLAYMAIN");
    static constexpr int DefaultStartLimit = 15000;
    static constexpr int DefaultProbeLimit = 5000;

    // currentStation gives the station of the grid's current row, or nullptr
    // when there is no current row.
    MainPlayer(const PlayerTexts &texts, TraceHook trace, MediaPlayer &wmp1,
               std::function<const Station *()> currentStation, QObject *parent = nullptr);

    // The play bar's key texts: "Play", "Stop", "Pause", "Mute", "NoMute".
    void playKey(const QString &key) override;
    void showState(const QString &state) override;
    void playAddress(const QString &address, const QString &name) override;
    void stopPlayback() override;
    // wmp1's play state, or Transitioning while a playlist is on its way.
    int playState() const override;
    bool scanning() const override { return m_scanning; }
    void setScanning(bool scanning) override { m_scanning = scanning; }
    void silence() override;
    // Milliseconds a station has to start playing, and the probe that finds
    // out why one did not has to answer.
    void setTimeLimits(int start, int probe);

    // The station now playing (empty when none) and the title its stream
    // names for the song on now (empty until it names one).
    QString stationName() const { return m_playingName; }
    QString songTitle() const { return m_songTitle; }

public slots:
    // Resumes a pause, or else starts the current row's station.
    void play();
    void pause();
    // Stops playback and ends a station check.
    void stop();
    void setMute(bool mute);
    // 0 to 100.
    void setVolume(int volume);

signals:
    // The play bar's caption, every time it is set.
    void captionChanged(const QString &caption);
    // The look the play bar is to take: "play" or "stop", in any letter case.
    void lookChanged(const QString &look);
    // The stream a playlist resolved to, as it starts.
    void streamChanged(const QString &stream);
    // playState() has changed.
    void playStateChanged(int state);
    // wmp1's volume has changed.
    void volumeChanged(int volume);
    // stationName() or songTitle() has changed.
    void songChanged(const QString &station, const QString &title);

private:
    // True when something was started (a stream, or the fetch of its playlist).
    bool startCurrentStation();
    bool startStation(const QString &address, const QString &name);
    void FetchPlaylist(const QString &address);
    void cancelFetch();
    void tellPlayState();
    void setSong(const QString &station, const QString &title);
    QString playingCaption() const;
    // The station starting has failed or run out of time: stopped, then explained.
    void startFailed();
    void showFailure(const ProbeReport &report);

    void wmp1PlayStateChange(int state);
    void wmp1TitleChange(const QString &title);
    void fileDLMainDownloadComplete(const QString &key, const QByteArray &body);
    void fileDLMainDownloadError(const QString &key, int statusCode, const QString &statusText);

    const PlayerTexts m_texts;
    TraceHook m_trace;
    MediaPlayer &wmp1;
    std::function<const Station *()> m_currentStation;
    FileDL *FileDLMain;
    QTimer m_startLimit;
    StreamProbe *m_probe;
    // What the player said of its failure; empty when time ran out.
    QString m_playerFailure;
    QString m_failedName;

    QString m_playingAddress;
    QString m_playingName;
    QString m_songTitle;
    bool m_scanning = false;
    bool m_fetching = false; // the playlist of the station starting is on its way
    int m_toldState;
};
