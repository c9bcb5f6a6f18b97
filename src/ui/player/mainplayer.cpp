#include "ui/player/mainplayer.h"

#include "catalogue/filedl.h"
#include "catalogue/station.h"
#include "ui/player/mediaplayer.h"
#include "player/playlistfetch.h"
#include "ui/player/ucplaybar.h"

#include <QUrl>

namespace {

const QString KeyPlay = QStringLiteral("Play");
const QString KeyStop = QStringLiteral("Stop");
const QString KeyPause = QStringLiteral("Pause");
const QString KeyMute = QStringLiteral("Mute");
const QString KeyNoMute = QStringLiteral("NoMute");

} // namespace

MainPlayer::MainPlayer(const PlayerTexts &texts, TraceHook trace, MediaPlayer &player, ucPlayBar &playBar,
                       std::function<const Station *()> currentStation, QObject *parent)
    : QObject(parent), m_texts(texts.playState.isEmpty() ? PlayerTexts::standard() : texts),
      m_trace(std::move(trace)), wmp1(player), ucPlayBar1(playBar),
      m_currentStation(std::move(currentStation)), FileDLMain(new FileDL(this))
{
    setObjectName(QStringLiteral("MainPlayer"));
    FileDLMain->setObjectName(QStringLiteral("FileDLMain"));

    connect(&ucPlayBar1, &ucPlayBar::Click, this, &MainPlayer::PlayKey);
    connect(&ucPlayBar1, &ucPlayBar::Volume, &wmp1, &MediaPlayer::setVolume);
    connect(&wmp1, &MediaPlayer::PlayStateChange, this, &MainPlayer::wmp1_PlayStateChange);
    connect(FileDLMain, &FileDL::DownloadComplete, this, &MainPlayer::FileDLMain_DownloadComplete);
    connect(FileDLMain, &FileDL::DownloadError, this, &MainPlayer::FileDLMain_DownloadError);
}

void MainPlayer::PlayKey(const QString &key)
{
    m_trace.trace(QStringLiteral("PlayBar1: Key = ") + key + QStringLiteral(", wmp1.Status=") +
                        wmp1.status());
    if (key == KeyPlay) {
        // Right after a stop the player may still say Paused; an emptied
        // player has nothing to resume.
        if (wmp1.playState() == MediaPlayer::Paused && !wmp1.URL().isEmpty())
            wmp1.play();
        else if (!StartCurrentStation())
            ucPlayBar1.SetState(KeyStop);
    } else if (key == KeyStop) {
        StopPlayback();
        m_scanning = false;
    } else if (key == KeyPause) {
        wmp1.pause();
    } else if (key == KeyMute) {
        wmp1.setMute(true);
    } else if (key == KeyNoMute) {
        wmp1.setMute(false);
    }
}

void MainPlayer::ShowState(const QString &state)
{
    ucPlayBar1.SetState(state);
}

int MainPlayer::PlayState() const
{
    // While the playlist is on its way the station is being prepared, although
    // wmp1 itself still tells the end of what played before.
    return m_fetching ? int(MediaPlayer::Transitioning) : wmp1.playState();
}

void MainPlayer::Silence()
{
    cancelFetch();
    wmp1.close();
    wmp1.setURL({});
    wmp1.stop();
}

bool MainPlayer::StartCurrentStation()
{
    const Station *station = m_currentStation();
    if (!station)
        return false;
    m_playingAddress = station->StreamURL;
    m_playingName = station->Name;
    wmp1.clearPlaylist();
    if (m_playingAddress.isEmpty()) {
        // The stray "& " is part of the caption.
        ucPlayBar1.SetCaption(QStringLiteral("Not StreamUrl Defined for: & ") + m_playingName);
        return false;
    }
    if (PlaylistFetch::IsPlaylistAddress(m_playingAddress)) {
        ucPlayBar1.SetCaption(QStringLiteral("Scanning for: ") + m_playingName);
        FetchPlaylist(m_playingAddress);
        return true;
    }
    ucPlayBar1.SetCaption(QStringLiteral("Connecting to: ") + m_playingName);
    wmp1.setURL(m_playingAddress);
    return true;
}

void MainPlayer::FetchPlaylist(const QString &address)
{
    m_fetching = true;
    FileDLMain->BeginDownload(QUrl::fromUserInput(PlaylistFetch::DownloadAddress(address)), TagPlaying);
}

void MainPlayer::cancelFetch()
{
    FileDLMain->Cancel(TagPlaying);
    m_fetching = false;
}

void MainPlayer::StopPlayback()
{
    // A playlist still on its way would start the station after the stop.
    cancelFetch();
    wmp1.setURL({});
    ucPlayBar1.SetState(KeyStop);
    ucPlayBar1.SetCaption({});
    m_playingName.clear();
}

void MainPlayer::wmp1_PlayStateChange(int state)
{
    switch (state) {
    case MediaPlayer::Stopped:
        // While a playlist is fetched wmp1 holds nothing: a stop it tells
        // then belongs to what played before, not to the station starting.
        if (!m_fetching)
            StopPlayback();
        break;
    case MediaPlayer::Paused:
        if (!m_playingName.isEmpty())
            ucPlayBar1.SetCaption(QStringLiteral("Paused: ") + m_playingName);
        break;
    case MediaPlayer::Playing:
        if (!m_playingName.isEmpty())
            ucPlayBar1.SetCaption(QStringLiteral("Playing: ") + m_playingName);
        break;
    case MediaPlayer::Ready:
        break;
    default:
        if (state < 16) {
            ucPlayBar1.SetCaption(m_playingName + QStringLiteral(" ... ") +
                                  m_texts.playState.value(state) + u' ' + QString::number(state));
        }
        break;
    }
}

void MainPlayer::FileDLMain_DownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagPlaying)
        return;
    m_fetching = false;
    const QString stream = PlaylistFetch::StreamFromPlaylist(body);
    if (stream.isEmpty()) {
        const QString name = m_playingName;
        StopPlayback();
        ucPlayBar1.SetCaption(QStringLiteral("Station is not available: ") + name);
        return;
    }
    ucPlayBar1.setToolTip(QStringLiteral("Stream: ") + stream);
    wmp1.setURL(stream);
}

void MainPlayer::FileDLMain_DownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key == TagPlaying) {
        m_fetching = false;
        ucPlayBar1.SetCaption(QStringLiteral("PLS error: ") + QString::number(statusCode) +
                              QStringLiteral(": ") + statusText);
    } else {
        ucPlayBar1.SetCaption(QStringLiteral("?"));
    }
}
