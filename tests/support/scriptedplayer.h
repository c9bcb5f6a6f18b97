#pragma once

#include "player/mediaplayer.h"

#include <QStringList>

#include <functional>

// A player that plays nothing. It keeps what it is told, writes each call
// into a log ("URL=x", "play", "pause", "stop", "close", "clear",
// "playCount=n", "fullScreen=1") and enters the states a test gives it. Like
// the real one it tells a state after the call that caused it, from the
// event loop; enter() tells one at once.
class ScriptedPlayer : public MediaPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScriptedPlayer)

public:
    explicit ScriptedPlayer(QObject *parent = nullptr);
    // Enters state and tells it now.
    void enter(int state);
    // Called after every non-empty URL: the test's script of what the media does.
    std::function<void(ScriptedPlayer &)> onOpen;
    // Enters state from the event loop, as the real player does, unless the
    // player is in that state by then or has been given another URL since:
    // like the real one, it tells only the states of its current media.
    void enterLater(int state);
    QStringList log;
    QString URL() const override { return m_url; }
    void setURL(const QString &url) override;
    int playState() const override { return m_state; }
    QString status() const override { return QStringLiteral("scripted ") + QString::number(m_state); }
    void play() override { request("play", Playing); }
    void pause() override { request("pause", Paused); }
    void stop() override { request("stop", Stopped); }
    bool mute() const override { return m_mute; }
    void setMute(bool mute) override { m_mute = mute; }
    int volume() const override { return m_volume; }
    void setVolume(int volume) override { m_volume = volume; }
    void setPlayCount(int count) override;
    bool fullScreen() const override { return m_fullScreen; }
    void setFullScreen(bool on) override;
    bool hasVideo() const override { return m_hasVideo; }
    qint64 duration() const override { return m_duration; }
    QString title() const override { return m_title; }
    qint64 position() const override { return m_position; }
    void setPosition(qint64 milliseconds) override;
    // What the media turns out to be, told as mediaChanged (and titleChanged).
    void setMedia(bool video, qint64 duration, const QString &title = {});
    void clearPlaylist() override { log << QStringLiteral("clear"); }
    void close() override;

private:
    // Logs the call and enters the state it leads to, from the event loop.
    void request(const char *call, int state);

    QString m_url;
    int m_urlsSet = 0;
    int m_state = Undefined;
    bool m_mute = false;
    int m_volume = 100;
    bool m_fullScreen = false;
    bool m_hasVideo = false;
    qint64 m_duration = 0;
    qint64 m_position = 0;
    QString m_title;
};
