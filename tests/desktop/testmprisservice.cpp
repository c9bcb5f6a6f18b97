#include "desktop/mprisservice.h"

#include "desktop/playerremote.h"

#include "support/mprisclient.h"
#include "support/privatebus.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const QString Root = MprisClient::Root;
const QString Player = MprisClient::Player;
const QString Properties = u"org.freedesktop.DBus.Properties"_s;

class MprisServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // The player applies a volume it is asked for, as the play bar does.
        QObject::connect(&player, &PlayerRemote::volumeRequested, &player, &PlayerRemote::setVolume);
        ASSERT_TRUE(service.start());
        ASSERT_TRUE(client.listen(bus.connect(), service.busName()));
    }
    QDBusMessage call(const QString &interface, const QString &method, const QVariantList &args = {})
    {
        return client.call(interface, method, args);
    }
    QVariant get(const QString &interface, const QString &name) { return client.get(interface, name); }
    QVariantMap metadata() { return client.metadata(); }
    QDBusMessage setVolume(const QVariant &volume) { return client.set(Player, u"Volume"_s, volume); }
    QVariantMap signalled() { return client.signalled(); }

    PrivateBus bus;
    PlayerRemote player;
    MprisService service{player, bus.connect()};
    MprisClient client;
};

} // namespace

TEST_F(MprisServiceTest, TheRootInterfaceNamesTheProgramAndASecondInstanceTakesItsOwnName)
{
    EXPECT_EQ(service.busName(), u"org.mpris.MediaPlayer2.tunecatch"_s);
    const QVariantMap root =
        MprisClient::plain(call(Properties, u"GetAll"_s, {Root}).arguments().value(0)).toMap();
    EXPECT_EQ(root, (QVariantMap{{u"CanQuit"_s, false},
                                 {u"CanRaise"_s, true},
                                 {u"HasTrackList"_s, false},
                                 {u"Identity"_s, u"Tunecatch"_s},
                                 {u"DesktopEntry"_s, u"tunecatch"_s},
                                 {u"SupportedUriSchemes"_s, QStringList()},
                                 {u"SupportedMimeTypes"_s, QStringList()}}));
    QSignalSpy raised(&player, &PlayerRemote::raiseRequested);
    call(Root, u"Raise"_s);
    EXPECT_EQ(raised.size(), 1);

    MprisService second(player, bus.connect());
    EXPECT_TRUE(second.start());
    EXPECT_EQ(second.busName(), u"org.mpris.MediaPlayer2.tunecatch.instance"_s +
                                    QString::number(QCoreApplication::applicationPid()));
    MprisService unconnected(player, QDBusConnection(u"no bus"_s));
    EXPECT_FALSE(unconnected.start());
    EXPECT_EQ(unconnected.busName(), QString());
}

TEST_F(MprisServiceTest, MethodsAskThePlayerOnlyWhatMakesSense)
{
    using S = PlayerRemote::Status;
    const struct
    {
        S status;
        bool canPlay, canGo;
        const char *method;
        QString request; // the player's signal that follows, or none
    } cases[] = {
        {S::Stopped, true, false, "Play", u"play"_s},
        {S::Paused, true, false, "Play", u"play"_s},
        {S::Playing, true, false, "Play", {}},
        {S::Stopped, false, false, "Play", {}},
        {S::Playing, true, false, "Pause", u"pause"_s},
        {S::Paused, true, false, "Pause", {}},
        {S::Playing, true, false, "PlayPause", u"pause"_s},
        {S::Paused, true, false, "PlayPause", u"play"_s},
        {S::Stopped, false, false, "PlayPause", {}},
        {S::Playing, true, false, "Stop", u"stop"_s},
        {S::Stopped, true, false, "Stop", u"stop"_s},
        {S::Playing, true, true, "Next", u"next"_s},
        {S::Playing, true, false, "Next", {}},
        {S::Playing, true, true, "Previous", u"previous"_s},
        {S::Playing, true, false, "Previous", {}},
    };
    QStringList requests;
    for (const auto &[signal, name] : {std::pair{&PlayerRemote::playRequested, u"play"_s},
                                       {&PlayerRemote::pauseRequested, u"pause"_s},
                                       {&PlayerRemote::stopRequested, u"stop"_s},
                                       {&PlayerRemote::nextRequested, u"next"_s},
                                       {&PlayerRemote::previousRequested, u"previous"_s}})
        QObject::connect(&player, signal, &player, [&requests, name] { requests.append(name); });
    for (const auto &c : cases) {
        player.setStatus(c.status);
        player.setCanPlay(c.canPlay);
        player.setNavigation(c.canGo, c.canGo);
        requests.clear();
        const QDBusMessage reply = call(Player, QLatin1StringView(c.method));
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage);
        EXPECT_EQ(requests, c.request.isEmpty() ? QStringList() : QStringList{c.request})
            << c.method << " in state " << int(c.status);
    }
    // A call with arguments of the wrong type is refused and harms nothing.
    EXPECT_EQ(call(Player, u"Seek"_s, {u"far"_s}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(Player, u"Stop"_s).type(), QDBusMessage::ReplyMessage);
}

TEST_F(MprisServiceTest, MetadataFollowsTheStationAndItsTitles)
{
    EXPECT_EQ(metadata(),
              (QVariantMap{{u"mpris:trackid"_s, QVariant::fromValue(QDBusObjectPath(
                                                    u"/org/mpris/MediaPlayer2/TrackList/NoTrack"_s))}}));
    player.setStation(u"Jazz FM"_s, QUrl(u"http://jazz.example/icon.png"_s));
    player.setTitle(u"Miles Davis - So What - Live"_s);
    player.setStatus(PlayerRemote::Status::Playing);
    const QVariantMap changed = signalled();
    EXPECT_EQ(changed.value(u"PlaybackStatus"_s), u"Playing"_s);
    QVariantMap song = changed.value(u"Metadata"_s).toMap();
    EXPECT_EQ(song, metadata());
    const QDBusObjectPath firstTrack = song.take(u"mpris:trackid"_s).value<QDBusObjectPath>();
    EXPECT_FALSE(firstTrack.path().startsWith(u"/org/mpris"_s));
    EXPECT_EQ(song, (QVariantMap{{u"xesam:title"_s, u"So What - Live"_s},
                                 {u"xesam:artist"_s, QStringList{u"Miles Davis"_s}},
                                 {u"xesam:album"_s, u"Jazz FM"_s},
                                 {u"mpris:artUrl"_s, u"http://jazz.example/icon.png"_s}}));

    // A title with no artist, then a new station before its first title.
    player.setTitle(u"News at noon"_s);
    song = signalled().value(u"Metadata"_s).toMap();
    EXPECT_NE(song.take(u"mpris:trackid"_s).value<QDBusObjectPath>(), firstTrack);
    EXPECT_EQ(song.value(u"xesam:title"_s), u"News at noon"_s);
    EXPECT_FALSE(song.contains(u"xesam:artist"_s));
    player.setStation(u"Rock"_s, QUrl());
    song = signalled().value(u"Metadata"_s).toMap();
    EXPECT_EQ(song.value(u"xesam:title"_s), u"Rock"_s);
    EXPECT_FALSE(song.contains(u"mpris:artUrl"_s));
}

TEST_F(MprisServiceTest, VolumeAndAbilitiesGoBothWays)
{
    const struct
    {
        QVariant asked;
        double volume;
    } cases[] = {{0.25, 0.25}, {-1.0, 0.0}, {7.0, 1.0}, {0.555, 0.56}, {std::nan(""), 0.56}};
    for (const auto &c : cases) {
        EXPECT_EQ(setVolume(c.asked).type(), QDBusMessage::ReplyMessage);
        EXPECT_DOUBLE_EQ(get(Player, u"Volume"_s).toDouble(), c.volume) << c.asked.toDouble();
        EXPECT_EQ(player.volume(), qRound(c.volume * 100));
    }
    EXPECT_EQ(setVolume(u"loud"_s).type(), QDBusMessage::ErrorMessage);
    EXPECT_DOUBLE_EQ(signalled().value(u"Volume"_s).toDouble(), 0.56);

    player.setCanPlay(true);
    player.setNavigation(true, false);
    const QVariantMap changed = signalled();
    EXPECT_EQ(changed, (QVariantMap{{u"CanPlay"_s, true},
                                    {u"CanPause"_s, true},
                                    {u"CanGoNext"_s, true},
                                    {u"CanGoPrevious"_s, false}}));
    for (const auto &[name, value] : changed.asKeyValueRange())
        EXPECT_EQ(get(Player, name), value) << name.toStdString();
}
