#include "support/scriptedplayer.h"

#include <QTimer>

#include <utility>

ScriptedPlayer::ScriptedPlayer(QObject *parent) : MediaPlayer(parent) {}

void ScriptedPlayer::enter(int state)
{
    m_state = state;
    emit PlayStateChange(state);
}

void ScriptedPlayer::enterLater(int state)
{
    // The real player tells changes only.
    QTimer::singleShot(0, this, [this, state, media = m_urlsSet] {
        if (m_state != state && media == m_urlsSet)
            enter(state);
    });
}

void ScriptedPlayer::setURL(const QString &url)
{
    log << QStringLiteral("URL=") + url;
    m_url = url;
    ++m_urlsSet;
    if (url.isEmpty())
        enterLater(Stopped);
    else if (onOpen)
        onOpen(*this);
}

void ScriptedPlayer::request(const char *call, int state)
{
    log << QLatin1StringView(call);
    enterLater(state);
}

void ScriptedPlayer::setPlayCount(int count)
{
    log << QStringLiteral("playCount=") + QString::number(count);
}

void ScriptedPlayer::setFullScreen(bool on)
{
    log << QStringLiteral("fullScreen=") + QString::number(on);
    m_fullScreen = on;
}

void ScriptedPlayer::close()
{
    log << QStringLiteral("close");
    m_url.clear();
}

void ScriptedPlayer::setPosition(qint64 milliseconds)
{
    log << QStringLiteral("position=") + QString::number(milliseconds);
    m_position = milliseconds;
    emit positionChanged(milliseconds);
}

void ScriptedPlayer::setMedia(bool video, qint64 duration, const QString &title)
{
    m_hasVideo = video;
    m_duration = duration;
    emit mediaChanged();
    if (title != std::exchange(m_title, title))
        emit titleChanged(title);
}
