#include "player/mainplayer.h"

#include "catalogue/filedl.h"
#include "catalogue/station.h"
#include "player/mediaplayer.h"
#include "player/playlistfetch.h"
#include "player/streamprobe.h"

#include <QUrl>

namespace {

const QString KeyPlay = QStringLiteral("Play");
const QString KeyStop = QStringLiteral("Stop");
const QString KeyPause = QStringLiteral("Pause");
const QString KeyMute = QStringLiteral("Mute");
const QString KeyNoMute = QStringLiteral("NoMute");

} // namespace

MainPlayer::MainPlayer(const PlayerTexts &texts, TraceHook trace, MediaPlayer &player,
                       std::function<const Station *()> currentStation, QObject *parent)
    : QObject(parent), m_texts(texts.playState.isEmpty() ? PlayerTexts::standard() : texts),
      m_trace(std::move(trace)), wmp1(player), m_currentStation(std::move(currentStation)),
      FileDLMain(new FileDL(this)), m_probe(new StreamProbe(this)), m_toldState(player.playState())
{
    setObjectName(QStringLiteral("MainPlayer"));
    FileDLMain->setObjectName(QStringLiteral("FileDLMain"));

    connect(&wmp1, &MediaPlayer::PlayStateChange, this, &MainPlayer::wmp1PlayStateChange);
    connect(&wmp1, &MediaPlayer::titleChanged, this, &MainPlayer::wmp1TitleChange);
    connect(FileDLMain, &FileDL::DownloadComplete, this, &MainPlayer::fileDLMainDownloadComplete);
    connect(FileDLMain, &FileDL::DownloadError, this, &MainPlayer::fileDLMainDownloadError);
    m_startLimit.setSingleShot(true);
    setTimeLimits(DefaultStartLimit, DefaultProbeLimit);
    connect(&m_startLimit, &QTimer::timeout, this, &MainPlayer::startFailed);
    connect(m_probe, &StreamProbe::finished, this, &MainPlayer::showFailure);
}

void MainPlayer::setTimeLimits(int start, int probe)
{
    m_startLimit.setInterval(start);
    m_probe->setTimeLimit(probe);
}

void MainPlayer::playKey(const QString &key)
{
    m_trace.trace(QStringLiteral("PlayBar1: Key = ") + key + QStringLiteral(", wmp1.Status=") +
                  wmp1.status());
    if (key == KeyPlay)
        play();
    else if (key == KeyStop)
        stop();
    else if (key == KeyPause)
        pause();
    else if (key == KeyMute)
        setMute(true);
    else if (key == KeyNoMute)
        setMute(false);
}

void MainPlayer::play()
{
    // Right after a stop the player may still say Paused; an emptied player
    // has nothing to resume.
    if (wmp1.playState() == MediaPlayer::Paused && !wmp1.URL().isEmpty())
        wmp1.play();
    else if (!startCurrentStation())
        emit lookChanged(KeyStop);
}

void MainPlayer::pause()
{
    wmp1.pause();
}

void MainPlayer::stop()
{
    stopPlayback();
    m_scanning = false;
}

void MainPlayer::setMute(bool mute)
{
    wmp1.setMute(mute);
}

void MainPlayer::setVolume(int volume)
{
    const int before = wmp1.volume();
    wmp1.setVolume(volume);
    if (wmp1.volume() != before)
        emit volumeChanged(wmp1.volume());
}

void MainPlayer::showState(const QString &state)
{
    emit lookChanged(state);
}

int MainPlayer::playState() const
{
    // While the playlist is on its way the station is being prepared, although
    // wmp1 itself still tells the end of what played before.
    return m_fetching ? int(MediaPlayer::Transitioning) : wmp1.playState();
}

void MainPlayer::silence()
{
    cancelFetch();
    wmp1.close();
    wmp1.setURL({});
    wmp1.stop();
}

void MainPlayer::playAddress(const QString &address, const QString &name)
{
    emit lookChanged(startStation(address, name) ? KeyPlay : KeyStop);
}

bool MainPlayer::startCurrentStation()
{
    const Station *station = m_currentStation();
    return station && startStation(station->StreamURL, station->Name);
}

bool MainPlayer::startStation(const QString &address, const QString &name)
{
    // A playlist still on its way belongs to the station before: it would
    // replace this one's address under this one's name.
    if (m_fetching)
        cancelFetch();
    m_playingAddress = address;
    setSong(name, {});
    // So is a failure still being explained.
    m_probe->cancel();
    wmp1.clearPlaylist();
    if (m_playingAddress.isEmpty()) {
        // The stray "& " is part of the caption.
        emit captionChanged(tr("Not StreamUrl Defined for: & %1").arg(m_playingName));
        return false;
    }
    if (PlaylistFetch::IsPlaylistAddress(m_playingAddress)) {
        emit captionChanged(tr("Scanning for: %1").arg(m_playingName));
        m_startLimit.start();
        FetchPlaylist(m_playingAddress);
        return true;
    }
    emit captionChanged(tr("Connecting to: %1").arg(m_playingName));
    m_startLimit.start();
    wmp1.setURL(m_playingAddress);
    return true;
}

void MainPlayer::FetchPlaylist(const QString &address)
{
    m_fetching = true;
    tellPlayState();
    FileDLMain->BeginDownload(QUrl::fromUserInput(PlaylistFetch::DownloadAddress(address)), TagPlaying);
}

void MainPlayer::cancelFetch()
{
    FileDLMain->Cancel(TagPlaying);
    m_fetching = false;
    tellPlayState();
}

void MainPlayer::stopPlayback()
{
    // A playlist still on its way would start the station after the stop.
    cancelFetch();
    m_startLimit.stop();
    m_probe->cancel();
    wmp1.setURL({});
    emit lookChanged(KeyStop);
    emit captionChanged({});
    setSong({}, {});
}

void MainPlayer::tellPlayState()
{
    const int state = playState();
    if (state != std::exchange(m_toldState, state))
        emit playStateChanged(state);
}

void MainPlayer::wmp1PlayStateChange(int state)
{
    switch (state) {
    case MediaPlayer::Stopped:
        // While a playlist is fetched wmp1 holds nothing: a stop it tells
        // then belongs to what played before, not to the station starting;
        // one told while a failure is explained belongs to that failure.
        if (!m_fetching && !m_probe->running())
            stopPlayback();
        break;
    case MediaPlayer::Paused:
        if (!m_playingName.isEmpty())
            emit captionChanged(tr("Paused: %1").arg(m_playingName));
        break;
    case MediaPlayer::Playing:
        m_startLimit.stop();
        if (!m_playingName.isEmpty())
            emit captionChanged(playingCaption());
        break;
    case MediaPlayer::Ready:
        // Ready before the first Playing is the player giving up on the media;
        // a station check rates that as it is.
        if (m_startLimit.isActive() && m_scanning) {
            m_startLimit.stop();
        } else if (m_startLimit.isActive()) {
            m_playerFailure = wmp1.status();
            startFailed();
            return;
        }
        break;
    default:
        if (state < 16) {
            emit captionChanged(
                tr("%1 ... %2 %3")
                    .arg(m_playingName, m_texts.playState.value(state), QString::number(state)));
        }
        break;
    }
    tellPlayState();
}

void MainPlayer::wmp1TitleChange(const QString &title)
{
    if (m_playingName.isEmpty())
        return;
    setSong(m_playingName, title.simplified());
    if (wmp1.playState() == MediaPlayer::Playing)
        emit captionChanged(playingCaption());
}

void MainPlayer::setSong(const QString &station, const QString &title)
{
    if (station == m_playingName && title == m_songTitle)
        return;
    m_playingName = station;
    m_songTitle = title;
    emit songChanged(station, title);
}

QString MainPlayer::playingCaption() const
{
    if (m_songTitle.isEmpty())
        return tr("Playing: %1").arg(m_playingName);
    return tr("Playing: %1 \u2014 %2").arg(m_playingName, m_songTitle);
}

void MainPlayer::fileDLMainDownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagPlaying)
        return;
    m_fetching = false;
    const QString stream = PlaylistFetch::StreamFromPlaylist(body);
    if (stream.isEmpty()) {
        const QString name = m_playingName;
        stopPlayback();
        emit captionChanged(tr("Station is not available: %1").arg(name));
        return;
    }
    emit streamChanged(stream);
    wmp1.setURL(stream);
    tellPlayState();
}

void MainPlayer::fileDLMainDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key == TagPlaying) {
        m_fetching = false;
        emit captionChanged(tr("PLS error: %1: %2").arg(QString::number(statusCode), statusText));
        tellPlayState();
    } else {
        emit captionChanged(tr("?"));
    }
}

void MainPlayer::startFailed()
{
    const QString address = m_playingAddress;
    m_failedName = m_playingName;
    stopPlayback();
    // A station check moves on by itself and rates the station by what it saw.
    if (m_scanning) {
        m_playerFailure.clear();
        return;
    }
    emit captionChanged(tr("%1 does not play. Finding out why...").arg(m_failedName));
    m_probe->start(address);
}

void MainPlayer::showFailure(const ProbeReport &report)
{
    QString reason = report.reason();
    // The station sends a stream: the trouble is the player's, or the time.
    if (reason.isEmpty()) {
        reason = m_playerFailure.isEmpty() ? tr("%1 sends a stream, but it did not start within %2 s")
                                                 .arg(m_failedName)
                                                 .arg(m_startLimit.interval() / 1000)
                                           : tr("%1 cannot be played: %2").arg(m_failedName, m_playerFailure);
    }
    m_playerFailure.clear();
    emit captionChanged(reason);
}
