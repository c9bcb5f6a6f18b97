#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

// What the desktop sees of the main window's player and what it may ask of
// it. The player keeps the state current through the setters and carries out
// the requests; the desktop's controls read the state and follow its signals.
// Each change signal comes only when a value really changed.
class PlayerRemote : public QObject
{
    Q_OBJECT

public:
    enum class Status
    {
        Stopped,
        Playing,
        Paused
    };

    explicit PlayerRemote(QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(PlayerRemote)

    Status status() const { return m_status; }
    QString station() const { return m_station; }
    // The stream's title as the station sends it, usually "Artist - Title".
    QString title() const { return m_title; }
    // The station's picture, when one is known.
    QUrl artUrl() const { return m_artUrl; }
    int volume() const { return m_volume; }
    bool canPlay() const { return m_canPlay; }
    bool canGoNext() const { return m_canGoNext; }
    bool canGoPrevious() const { return m_canGoPrevious; }

    void setStatus(Status status);
    // A new station has no title yet.
    void setStation(const QString &name, const QUrl &artUrl);
    void setTitle(const QString &title);
    // 0 to 100; values outside are clamped.
    void setVolume(int volume);
    // Whether Play can start something: a station is chosen.
    void setCanPlay(bool canPlay);
    void setNavigation(bool canGoNext, bool canGoPrevious);

    // What the desktop asks. Each becomes a request signal only where it
    // makes sense: Play while playing, Pause unless playing, Next or Previous
    // with nowhere to go do nothing. Stop always goes on: a station that
    // failed counts as stopped here, while the player still has it to stop.
    void play();
    void pause();
    void playPause();
    void stop();
    void next();
    void previous();
    void requestVolume(int volume);
    void raise();

signals:
    void statusChanged();
    void nowPlayingChanged(); // station, title or picture
    void volumeChanged();
    void abilitiesChanged(); // play, next, previous

    void playRequested();
    void pauseRequested();
    void stopRequested();
    void nextRequested();
    void previousRequested();
    // The player answers with setVolume once it has applied it.
    void volumeRequested(int volume);
    void raiseRequested();

private:
    Status m_status = Status::Stopped;
    QString m_station;
    QString m_title;
    QUrl m_artUrl;
    int m_volume = 100;
    bool m_canPlay = false;
    bool m_canGoNext = false;
    bool m_canGoPrevious = false;
};
