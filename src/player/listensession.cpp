#include "player/listensession.h"

#include "base/launchoptions.h"
#include "catalogue/filedl.h"
#include "catalogue/stationinput.h"
#include "player/mediaplayer.h"
#include "player/playlistfetch.h"
#include "player/streamprobe.h"

#include <QCoreApplication>
#include <QDate>
#include <QPointer>
#include <QUrl>

#include <utility>

ListenSession::ListenSession(const LaunchOptions &launch, MediaPlayer &player, QObject *parent)
    : QObject(parent), m_launch(launch), MPlayer(player), m_fileDL(new FileDL(this)),
      m_probe(new StreamProbe(this))
{
    m_fileDL->setObjectName(QStringLiteral("FileDL"));
    connect(&MPlayer, &MediaPlayer::PlayStateChange, this, &ListenSession::mPlayerPlayStateChange);
    connect(&MPlayer, &MediaPlayer::titleChanged, this, &ListenSession::mPlayerTitleChange);
    connect(m_fileDL, &FileDL::DownloadComplete, this, &ListenSession::fileDLDownloadComplete);
    connect(m_fileDL, &FileDL::DownloadError, this, &ListenSession::fileDLDownloadError);
    m_startLimit.setSingleShot(true);
    setTimeLimits(DefaultStartLimit, DefaultProbeLimit);
    connect(&m_startLimit, &QTimer::timeout, this, &ListenSession::giveUp);
    connect(m_probe, &StreamProbe::finished, this, &ListenSession::showReason);
}

void ListenSession::setTimeLimits(int start, int probe)
{
    m_startLimit.setInterval(start);
    m_probe->setTimeLimit(probe);
}

void ListenSession::play(const QString &url, const QString &title, int row)
{
    m_url = url;
    m_title = title;
    m_row = row;
    if (m_url.isEmpty()) {
        emit captionChanged(tr("Stream missing: %1").arg(m_title));
        MPlayer.setURL({});
        emit viewRequested(false);
        return;
    }
    if (PlaylistFetch::IsPlaylistAddress(m_url)) {
        emit captionChanged(tr("Scanning for: %1").arg(m_title));
        FetchPlaylist();
        return;
    }
    // An address naming an MP3 file is a recording: it plays at once.
    emit captionChanged(m_url.toLower().contains(u".mp3") ? tr("Playing: %1").arg(m_title)
                                                          : tr("Connecting to: %1").arg(m_title));
    startPlayback(m_url);
}

void ListenSession::startPlayback(const QString &address)
{
    m_retries = RetryBudget;
    emit viewRequested(true);
    m_address = address;
    // The warm-up player and recordings (files) need no watch.
    if (m_row != WarmUpRow && StationInput::isStreamAddress(address))
        m_startLimit.start();
    MPlayer.setURL(address);
    if (m_row == WarmUpRow) {
        pauseWarmUp();
        emit outOfSightRequested();
    }
}

void ListenSession::pauseWarmUp()
{
    MPlayer.setPlayCount(WarmUpPlayCount);
    MPlayer.pause();
}

void ListenSession::FetchPlaylist()
{
    const QString address = PlaylistFetch::DownloadAddress(m_url);
    emit infoChanged(tr("Query: %1").arg(address));
    m_fileDL->BeginDownload(QUrl::fromUserInput(address), TagPlaying);
}

void ListenSession::fileDLDownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagPlaying || m_closing)
        return;
    const QString stream = PlaylistFetch::StreamFromPlaylist(body);
    if (stream.isEmpty()) {
        emit captionChanged(tr("Station is not available: %1").arg(m_title));
        return;
    }
    emit captionChanged(tr("Playing: %1").arg(m_title));
    emit infoChanged(tr("Stream: %1").arg(stream));
    startPlayback(stream);
}

void ListenSession::fileDLDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagPlaying || m_closing)
        return;
    emit captionChanged(tr("PLS error: %1: %2").arg(QString::number(statusCode), statusText));
}

void ListenSession::mPlayerPlayStateChange(int state)
{
    if (m_closing || m_failed)
        return;
    if (m_row == WarmUpRow && state != MediaPlayer::Paused)
        pauseWarmUp();
    if (state == MediaPlayer::Ready) {
        // The player fell back without playing: try the address again.
        MPlayer.setURL(m_address);
        --m_retries;
        const QPointer<ListenSession> alive(this);
        QCoreApplication::processEvents();
        if (!alive || m_closing || m_failed)
            return;
    }
    if (m_retries > 0) {
        if (state == MediaPlayer::Playing)
            m_startLimit.stop();
        if (state == MediaPlayer::Playing && m_row >= 0 && !m_launch.launchMode)
            emit stationPlayed(PlayedKind, m_row, QDate::currentDate().toString(Qt::ISODate));
    } else {
        giveUp();
    }
}

void ListenSession::mPlayerTitleChange(const QString &title)
{
    if (m_closing || m_row == WarmUpRow)
        return;
    const QString song = title.simplified();
    if (!song.isEmpty())
        emit captionChanged(tr("Playing: %1 \u2014 %2").arg(m_title, song));
    // Recordings played again were noted when they were recorded.
    if (m_row >= 0)
        emit songChanged(m_title, song);
}

void ListenSession::giveUp()
{
    m_startLimit.stop();
    m_failed = true;
    const QString address = std::exchange(m_address, {});
    MPlayer.setURL({});
    emit captionChanged(tr("Unable to load %1").arg(address));
    if (StationInput::isStreamAddress(address))
        m_probe->start(address);
}

void ListenSession::showReason(const ProbeReport &report)
{
    const QString reason = report.reason();
    emit infoChanged(reason.isEmpty() ? tr("The station sends a stream, but it did not play.") : reason);
}

void ListenSession::enterFullScreen()
{
    if (MPlayer.playState() == MediaPlayer::Playing)
        MPlayer.setFullScreen(true);
}

bool ListenSession::leaveFullScreen()
{
    if (!MPlayer.fullScreen())
        return false;
    MPlayer.setFullScreen(false);
    return true;
}

void ListenSession::escape()
{
    if (!leaveFullScreen())
        emit closeRequested();
}

void ListenSession::close()
{
    m_closing = true;
    m_startLimit.stop();
    m_probe->cancel();
    m_fileDL->Cancel(TagPlaying);
    MPlayer.setURL({});
    MPlayer.stop();
    MPlayer.close();
}
