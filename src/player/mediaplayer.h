#pragma once

#include <QObject>
#include <QString>

// The embedded media player as the player logic sees it, in the player's own
// terms: setting URL starts playing an address (an empty one stops), the play
// state is one of the numbered states below, and every change of it is told
// through PlayStateChange. Where the player shows its pictures, and what keys
// and menus do there, belongs to the window (PlayerView).
class MediaPlayer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MediaPlayer)

public:
    enum PlayState
    {
        Undefined = 0,
        Stopped = 1,
        Paused = 2,
        Playing = 3,
        ScanForward = 4,
        ScanReverse = 5,
        Buffering = 6,
        Waiting = 7,
        MediaEnded = 8,
        Transitioning = 9,
        Ready = 10,
        Reconnecting = 11,
        Last = 12,
    };

    explicit MediaPlayer(QObject *parent = nullptr);

    virtual QString URL() const = 0;
    virtual void setURL(const QString &url) = 0;
    virtual int playState() const = 0;
    // A short text of what the player is doing, or of its last failure.
    virtual QString status() const = 0;

    // controls
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;

    // settings
    virtual bool mute() const = 0;
    virtual void setMute(bool mute) = 0;
    // 0 to 100.
    virtual int volume() const = 0;
    virtual void setVolume(int volume) = 0;
    // How many times the media plays through; 1 plays it once.
    virtual void setPlayCount(int count) = 0;

    virtual bool fullScreen() const = 0;
    virtual void setFullScreen(bool on) = 0;

    // What the media is, once known: pictures or sound only, its length in
    // milliseconds (0 for a stream) and the title it names (empty when none;
    // titleChanged tells each new one).
    virtual bool hasVideo() const = 0;
    virtual qint64 duration() const = 0;
    virtual QString title() const = 0;
    // Milliseconds into the media; a seek for media with a length.
    virtual qint64 position() const = 0;
    virtual void setPosition(qint64 milliseconds) = 0;

    // currentPlaylist.clear
    virtual void clearPlaylist() = 0;
    // Lets go of the media and everything held for it.
    virtual void close() = 0;

signals:
    void PlayStateChange(int newState);
    // The title the media names for what plays now, as a station sends it
    // ("Artist - Title"); empty when it names none. Told on every change.
    void titleChanged(const QString &title);
    // hasVideo or duration has changed.
    void mediaChanged();
    void positionChanged(qint64 milliseconds);
};
