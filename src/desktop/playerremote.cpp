#include "desktop/playerremote.h"

PlayerRemote::PlayerRemote(QObject *parent) : QObject(parent) {}

void PlayerRemote::setStatus(Status status)
{
    if (status == m_status)
        return;
    m_status = status;
    emit statusChanged();
}

void PlayerRemote::setStation(const QString &name, const QUrl &artUrl)
{
    if (name == m_station && artUrl == m_artUrl)
        return;
    m_station = name;
    m_artUrl = artUrl;
    m_title.clear();
    emit nowPlayingChanged();
}

void PlayerRemote::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit nowPlayingChanged();
}

void PlayerRemote::setVolume(int volume)
{
    volume = std::clamp(volume, 0, 100);
    if (volume == m_volume)
        return;
    m_volume = volume;
    emit volumeChanged();
}

void PlayerRemote::setCanPlay(bool canPlay)
{
    if (canPlay == m_canPlay)
        return;
    m_canPlay = canPlay;
    emit abilitiesChanged();
}

void PlayerRemote::setNavigation(bool canGoNext, bool canGoPrevious)
{
    if (canGoNext == m_canGoNext && canGoPrevious == m_canGoPrevious)
        return;
    m_canGoNext = canGoNext;
    m_canGoPrevious = canGoPrevious;
    emit abilitiesChanged();
}

void PlayerRemote::play()
{
    if (m_canPlay && m_status != Status::Playing)
        emit playRequested();
}

void PlayerRemote::pause()
{
    if (m_status == Status::Playing)
        emit pauseRequested();
}

void PlayerRemote::playPause()
{
    if (m_status == Status::Playing)
        pause();
    else
        play();
}

void PlayerRemote::stop()
{
    emit stopRequested();
}

void PlayerRemote::next()
{
    if (m_canGoNext)
        emit nextRequested();
}

void PlayerRemote::previous()
{
    if (m_canGoPrevious)
        emit previousRequested();
}

void PlayerRemote::requestVolume(int volume)
{
    emit volumeRequested(std::clamp(volume, 0, 100));
}

void PlayerRemote::raise()
{
    emit raiseRequested();
}
