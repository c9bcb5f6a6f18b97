#include "ui/player/qtmediaplayer.h"

#include "recorder/streamtitlewatch.h"
#include "ui/player/playerview.h"

#include <QAudioOutput>
#include <QMediaMetaData>
#include <QMediaPlayer>
#include <QVideoWidget>

namespace {

// Audio that has not moved on for this long is no longer playing.
constexpr int StallTime = 1000;

} // namespace

QtMediaPlayer::QtMediaPlayer(QVideoWidget &video, QObject *parent)
    : MediaPlayer(parent), m_player(nullptr), m_audio(new QAudioOutput(this)), m_video(video),
      m_titleWatch(new StreamTitleWatch({}, this))
{
    connect(m_titleWatch, &StreamTitleWatch::titleChanged, this, [this](const QString &title) {
        if (!m_mediaTitles)
            setTitle(title);
    });
    // Audio that moves on is playing, whatever the buffer says: a live stream
    // arrives as fast as it plays, so its buffer may never report full.
    m_stall.setSingleShot(true);
    m_stall.setInterval(StallTime);
    connect(&m_stall, &QTimer::timeout, this, [this] {
        m_progressing = false;
        scheduleUpdate();
    });
    newMedia();
}

QtMediaPlayer::~QtMediaPlayer()
{
    m_player->disconnect(this);
}

PlayerView *QtMediaPlayer::create(QWidget *owner)
{
    auto *video = new QVideoWidget;
    return new PlayerView(new QtMediaPlayer(*video), video, owner);
}

// Every address gets a player of its own. Qt keeps the media of an unchanged
// source, so a retry of the same address would not start again; and a failed
// player still sends messages of its failure for a while, which must not
// count against the next attempt. A failed player is also slow to stop,
// while dropping one is quick.
void QtMediaPlayer::newMedia()
{
    if (m_player) {
        QMediaPlayer *old = std::exchange(m_player, nullptr);
        old->disconnect(this);
        old->setAudioOutput(nullptr);
        old->setVideoOutput(nullptr);
        old->setParent(nullptr);
        old->deleteLater();
    }
    m_player = new QMediaPlayer(this);
    m_player->setAudioOutput(m_audio);
    m_player->setVideoOutput(&m_video);
    m_player->setLoops(m_playCount);
    connect(m_player, &QMediaPlayer::playbackStateChanged, this, &QtMediaPlayer::scheduleUpdate);
    connect(m_player, &QMediaPlayer::mediaStatusChanged, this, [this](QMediaPlayer::MediaStatus status) {
        if (status == QMediaPlayer::BufferedMedia)
            m_buffered = true;
        else if (status == QMediaPlayer::InvalidMedia)
            fail(m_player->errorString());
        scheduleUpdate();
    });
    connect(m_player, &QMediaPlayer::errorOccurred, this,
            [this](QMediaPlayer::Error error, const QString &text) {
                if (error != QMediaPlayer::NoError)
                    fail(text);
            });
    connect(m_player, &QMediaPlayer::metaDataChanged, this, &QtMediaPlayer::takeTitle);
    connect(m_player, &QMediaPlayer::hasVideoChanged, this, &MediaPlayer::mediaChanged);
    connect(m_player, &QMediaPlayer::durationChanged, this, &MediaPlayer::mediaChanged);
    connect(m_player, &QMediaPlayer::positionChanged, this, &MediaPlayer::positionChanged);
    connect(m_player, &QMediaPlayer::positionChanged, this, [this](qint64 position) {
        if (position <= m_lastPosition)
            return;
        m_lastPosition = position;
        m_stall.start();
        if (!std::exchange(m_progressing, true))
            scheduleUpdate();
    });
}

void QtMediaPlayer::fail(const QString &text)
{
    // One failure comes as several messages: the first says most.
    if (!m_failed)
        m_error = text.isEmpty() ? QStringLiteral("Media not playable") : text;
    m_failed = true;
    scheduleUpdate();
}

bool QtMediaPlayer::hasVideo() const
{
    return m_player->hasVideo();
}

qint64 QtMediaPlayer::duration() const
{
    // A stream has no end; GStreamer may still guess a length from its bit rate.
    return m_player->isSeekable() ? m_player->duration() : 0;
}

QString QtMediaPlayer::title() const
{
    return m_title;
}

qint64 QtMediaPlayer::position() const
{
    return m_player->position();
}

void QtMediaPlayer::setPosition(qint64 milliseconds)
{
    m_player->setPosition(milliseconds);
}

void QtMediaPlayer::setURL(const QString &url)
{
    m_url = url;
    m_failed = false;
    m_buffered = false;
    m_endReported = false;
    m_error.clear();
    m_lastPosition = -1;
    m_progressing = false;
    m_stall.stop();
    m_titleWatch->stop();
    m_mediaTitles = false;
    m_titleWatchDue = StreamTitleWatch::watches(url);
    setTitle({});
    newMedia();
    if (!url.isEmpty()) {
        m_player->setSource(QUrl::fromUserInput(url));
        m_player->play();
        m_transitionDue = true;
    }
    scheduleUpdate();
}

QString QtMediaPlayer::status() const
{
    if (m_failed)
        return m_error;
    switch (m_state) {
    case Stopped:
        return QStringLiteral("Stopped");
    case Paused:
        return QStringLiteral("Paused");
    case Playing:
        return QStringLiteral("Playing");
    case Buffering:
        return QStringLiteral("Buffering (%1%)").arg(qRound(m_player->bufferProgress() * 100));
    case Waiting:
        return QStringLiteral("Waiting for data");
    case MediaEnded:
        return QStringLiteral("Media ended");
    case Transitioning:
        return QStringLiteral("Connecting...");
    default:
        return QStringLiteral("Ready");
    }
}

void QtMediaPlayer::play()
{
    if (!m_url.isEmpty())
        m_player->play();
}

void QtMediaPlayer::pause()
{
    m_player->pause();
}

void QtMediaPlayer::stop()
{
    // A failed player has nothing to stop.
    if (!m_failed)
        m_player->stop();
}

bool QtMediaPlayer::mute() const
{
    return m_audio->isMuted();
}

void QtMediaPlayer::setMute(bool mute)
{
    m_audio->setMuted(mute);
}

void QtMediaPlayer::setVolume(int volume)
{
    m_volume = qBound(0, volume, 100);
    // The slider reads as loudness; the output wants a linear factor.
    m_audio->setVolume(float(
        QAudio::convertVolume(m_volume / 100.0, QAudio::LogarithmicVolumeScale, QAudio::LinearVolumeScale)));
}

void QtMediaPlayer::setPlayCount(int count)
{
    m_playCount = qMax(1, count);
    m_player->setLoops(m_playCount);
}

bool QtMediaPlayer::fullScreen() const
{
    return m_video.isFullScreen();
}

void QtMediaPlayer::setFullScreen(bool on)
{
    m_video.setFullScreen(on);
}

void QtMediaPlayer::clearPlaylist()
{
    // Qt's player holds one source, which the next URL replaces; there is no
    // queue of further items to empty, and the current one plays on.
}

void QtMediaPlayer::close()
{
    setFullScreen(false);
    setURL({});
}

// Qt's two states (and a failure) as one play-state number.
int QtMediaPlayer::stateNow() const
{
    if (m_url.isEmpty())
        return Stopped;
    if (m_failed)
        return Ready;
    const QMediaPlayer::MediaStatus status = m_player->mediaStatus();
    switch (m_player->playbackState()) {
    case QMediaPlayer::PausedState:
        return Paused;
    case QMediaPlayer::StoppedState:
        return status == QMediaPlayer::EndOfMedia && !m_endReported ? MediaEnded : Stopped;
    case QMediaPlayer::PlayingState:
        break;
    }
    if (status == QMediaPlayer::EndOfMedia)
        return MediaEnded;
    if (m_progressing || status == QMediaPlayer::BufferedMedia)
        return Playing;
    switch (status) {
    case QMediaPlayer::BufferingMedia:
        return Buffering;
    case QMediaPlayer::StalledMedia:
        return Waiting;
    case QMediaPlayer::LoadedMedia:
        // Streams pass through "loaded" again after their first buffering.
        return m_buffered ? Playing : Transitioning;
    default:
        return Transitioning;
    }
}

void QtMediaPlayer::scheduleUpdate()
{
    if (std::exchange(m_updatePending, true))
        return;
    QMetaObject::invokeMethod(this, &QtMediaPlayer::update, Qt::QueuedConnection);
}

void QtMediaPlayer::update()
{
    m_updatePending = false;
    // Every new address passes through Transitioning, so that the same state
    // twice in a row (Ready after Ready, on a retry) is still told.
    if (std::exchange(m_transitionDue, false) && m_state != Transitioning) {
        report(Transitioning);
        if (m_updatePending)
            return; // the handler changed the media; its own update follows
    }
    const int state = stateNow();
    if (state == m_state)
        return;
    // Qt leaves a failed player "playing": let go of it, so that nothing
    // holds the address while the player waits at Ready.
    if (state == Ready)
        newMedia();
    report(state);
    if (state == MediaEnded) {
        m_endReported = true;
        scheduleUpdate();
    }
}

// GStreamer hands a station's stream title over as the media's title; a
// file's tags name artist and title apart.
void QtMediaPlayer::takeTitle()
{
    const QMediaMetaData data = m_player->metaData();
    const QString title = data.stringValue(QMediaMetaData::Title).simplified();
    const QString artist = data.stringValue(QMediaMetaData::ContributingArtist).simplified();
    if (title.isEmpty())
        return;
    m_mediaTitles = true;
    m_titleWatch->stop();
    if (artist.isEmpty() || title.contains(artist))
        setTitle(title);
    else
        setTitle(artist + QStringLiteral(" - ") + title);
}

void QtMediaPlayer::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit titleChanged(title);
}

void QtMediaPlayer::report(int state)
{
    if (state == Playing && !m_mediaTitles && std::exchange(m_titleWatchDue, false))
        m_titleWatch->watch(m_url);
    else if (state == Ready)
        m_titleWatch->stop();
    m_state = state;
    emit PlayStateChange(state);
}
