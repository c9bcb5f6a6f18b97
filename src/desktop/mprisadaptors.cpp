#include "desktop/mprisadaptors.h"

#include "desktop/playerremote.h"
#include "desktop/streamtitle.h"

#include <QDBusMessage>

#include <cmath>

namespace {

const QString PlayerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

} // namespace

MprisRootAdaptor::MprisRootAdaptor(QObject *object, PlayerRemote &player)
    : QDBusAbstractAdaptor(object), m_player(player)
{
}

void MprisRootAdaptor::Raise()
{
    m_player.raise();
}

void MprisRootAdaptor::Quit() {}

MprisPlayerAdaptor::MprisPlayerAdaptor(QObject *object, PlayerRemote &player, QDBusConnection bus)
    : QDBusAbstractAdaptor(object), m_player(player), m_bus(std::move(bus))
{
    m_send.setSingleShot(true);
    m_send.setInterval(0);
    connect(&m_send, &QTimer::timeout, this, &MprisPlayerAdaptor::sendChanges);
    connect(&player, &PlayerRemote::statusChanged, this, [this] { changed({"PlaybackStatus"}); });
    connect(&player, &PlayerRemote::nowPlayingChanged, this, [this] {
        ++m_track;
        changed({"Metadata"});
    });
    connect(&player, &PlayerRemote::volumeChanged, this, [this] { changed({"Volume"}); });
    connect(&player, &PlayerRemote::abilitiesChanged, this, [this] {
        changed({"CanPlay", "CanPause", "CanGoNext", "CanGoPrevious"});
    });
}

QString MprisPlayerAdaptor::playbackStatus() const
{
    switch (m_player.status()) {
    case PlayerRemote::Status::Playing:
        return QStringLiteral("Playing");
    case PlayerRemote::Status::Paused:
        return QStringLiteral("Paused");
    default:
        return QStringLiteral("Stopped");
    }
}

QVariantMap MprisPlayerAdaptor::metadata() const
{
    QVariantMap map;
    if (m_player.station().isEmpty() && m_player.title().isEmpty()) {
        map.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(QStringLiteral(
                                                        "/org/mpris/MediaPlayer2/TrackList/NoTrack"))));
        return map;
    }
    map.insert(
        QStringLiteral("mpris:trackid"),
        QVariant::fromValue(QDBusObjectPath(QStringLiteral("/tunecatch/track/") + QString::number(m_track))));
    const StreamTitle song = StreamTitle::split(m_player.title());
    // Before the first title, panels show the station rather than nothing.
    map.insert(QStringLiteral("xesam:title"), song.title.isEmpty() ? m_player.station() : song.title);
    if (!song.artist.isEmpty())
        map.insert(QStringLiteral("xesam:artist"), QStringList{song.artist});
    if (!m_player.station().isEmpty())
        map.insert(QStringLiteral("xesam:album"), m_player.station());
    if (m_player.artUrl().isValid())
        map.insert(QStringLiteral("mpris:artUrl"), m_player.artUrl().toString());
    return map;
}

double MprisPlayerAdaptor::volume() const
{
    return m_player.volume() / 100.0;
}

void MprisPlayerAdaptor::setVolume(double volume)
{
    if (std::isnan(volume))
        return;
    m_player.requestVolume(int(std::lround(std::clamp(volume, 0.0, 1.0) * 100)));
}

bool MprisPlayerAdaptor::canGoNext() const
{
    return m_player.canGoNext();
}

bool MprisPlayerAdaptor::canGoPrevious() const
{
    return m_player.canGoPrevious();
}

bool MprisPlayerAdaptor::canPlay() const
{
    return m_player.canPlay();
}

void MprisPlayerAdaptor::Next()
{
    m_player.next();
}

void MprisPlayerAdaptor::Previous()
{
    m_player.previous();
}

void MprisPlayerAdaptor::Pause()
{
    m_player.pause();
}

void MprisPlayerAdaptor::PlayPause()
{
    m_player.playPause();
}

void MprisPlayerAdaptor::Stop()
{
    m_player.stop();
}

void MprisPlayerAdaptor::Play()
{
    m_player.play();
}

void MprisPlayerAdaptor::Seek(qlonglong) {}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath &, qlonglong) {}

void MprisPlayerAdaptor::OpenUri(const QString &) {}

void MprisPlayerAdaptor::changed(std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const QString text = QLatin1StringView(name);
        if (!m_changed.contains(text))
            m_changed.append(text);
    }
    if (!m_send.isActive())
        m_send.start();
}

void MprisPlayerAdaptor::sendChanges()
{
    QVariantMap values;
    for (const QString &name : std::as_const(m_changed))
        values.insert(name, property(name.toLatin1().constData()));
    m_changed.clear();
    QDBusMessage signal = QDBusMessage::createSignal(
        ObjectPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    signal << PlayerInterface << values << QStringList();
    m_bus.send(signal);
}
