#include "player/mainplayer.h"

#include "catalogue/filedl.h"
#include "catalogue/station.h"
#include "player/streamprobe.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedplayer.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QUrl>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

enum Row
{
    Direct,
    NoAddress,
    Listed,
    Empty,
    Gone,
    NoRow
};

// The first argument of every signal a spy caught, joined by commas.
QString told(const QSignalSpy &spy)
{
    QStringList texts;
    for (const QVariantList &arguments : spy)
        texts << arguments.first().toString();
    return texts.join(u',');
}

// The main window's player over a scripted wmp1, with playlists served on
// 127.0.0.1 and what it asks of the play bar caught by spies.
class MainPlayerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server.pages["/list.PLS"] =
            IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=http://one.test/s\r\n"
                            "Title1=(#1 - 1/100) One\r\nLength1=-1\r\nVersion=2\r\n");
        server.pages["/empty.pls"] = IcyServer::page("[playlist]\r\nnumberofentries=0\r\n\r\n\r\n");
        ASSERT_TRUE(server.start());
        const auto station = [](const QString &name, const QString &address) {
            Station made;
            made.Name = name;
            made.StreamURL = address;
            return made;
        };
        stations = {station(u"Direct FM"_s, u"http://127.0.0.1:9/direct"_s), station(u"No Address"_s, {}),
                    station(u"Listed FM"_s, server.url(u"/list.PLS"_s)),
                    station(u"Empty List"_s, server.url(u"/empty.pls"_s)),
                    station(u"Gone FM"_s, server.url(u"/gone.pls"_s))};
    }
    void press(Row pressed)
    {
        row = pressed;
        player.playKey(u"Play"_s);
    }
    QString caption() const { return captions.isEmpty() ? u"(none)"_s : captions.last().first().toString(); }
    bool waitForState(int state) const
    {
        return waitUntil([&] { return wmp1.playState() == state; }, 2000);
    }

    IcyServer server;
    QList<Station> stations;
    Row row = NoRow;
    QStringList traced;
    ScriptedPlayer wmp1;
    MainPlayer player{{}, TraceHook([this](const QString &line) { traced << line; }), wmp1, [this] {
                          return row == NoRow ? nullptr : &stations.at(row);
                      }};
    QSignalSpy captions{&player, &MainPlayer::captionChanged};
    QSignalSpy looks{&player, &MainPlayer::lookChanged};
    QSignalSpy streams{&player, &MainPlayer::streamChanged};
    QSignalSpy states{&player, &MainPlayer::playStateChanged};
};

TEST_F(MainPlayerTest, PlayStartsTheCurrentStationOrSaysWhyNot)
{
    const struct
    {
        Row row;
        QString caption, played, looks; // once settled: wmp1's address, the bar's looks asked for
    } rows[] = {{Direct, u"Connecting to: Direct FM"_s, u"http://127.0.0.1:9/direct"_s, {}},
                {NoAddress, u"Not StreamUrl Defined for: & No Address"_s, {}, u"Stop"_s},
                {Listed, u"Scanning for: Listed FM"_s, u"http://one.test/s"_s, {}},
                {Empty, u"Station is not available: Empty List"_s, {}, u"Stop"_s},
                {Gone, u"PLS error: 0: An Error Has Occurred."_s, {}, {}},
                {NoRow, u"(none)"_s, {}, u"Stop"_s}};
    for (const auto &r : rows) {
        wmp1.log.clear();
        captions.clear();
        looks.clear();
        press(r.row);
        EXPECT_TRUE(waitUntil([&] { return caption() == r.caption && wmp1.URL() == r.played; }, 5000))
            << int(r.row) << ": " << caption().toStdString() << " / " << wmp1.URL().toStdString();
        EXPECT_EQ(told(looks), r.looks) << int(r.row);
        EXPECT_EQ(wmp1.log.value(0), r.row == NoRow ? QString() : u"clear"_s) << int(r.row);
        player.playKey(u"Stop"_s);
        ASSERT_TRUE(waitForState(MediaPlayer::Stopped));
    }
    EXPECT_EQ(told(streams), u"http://one.test/s"_s);
}

TEST_F(MainPlayerTest, AnAddressFromOutsideTheListPlaysUnderItsOwnName)
{
    row = Direct;
    player.playAddress(server.url(u"/list.PLS"_s), u"Found FM"_s);
    EXPECT_TRUE(waitUntil([&] { return wmp1.URL() == u"http://one.test/s"; }, 5000));
    EXPECT_EQ(told(captions), u"Scanning for: Found FM"_s) << "not the list's current row";
    EXPECT_EQ(told(looks), u"Play"_s);
    wmp1.enter(MediaPlayer::Playing);
    EXPECT_EQ(caption(), u"Playing: Found FM"_s);
    looks.clear();
    player.playAddress({}, u"Nowhere"_s);
    EXPECT_EQ(caption(), u"Not StreamUrl Defined for: & Nowhere"_s);
    EXPECT_EQ(told(looks), u"Stop"_s);
}

TEST_F(MainPlayerTest, ThePlayersStatesShowInTheCaptionAndAreTold)
{
    press(Direct);
    const std::pair<int, QString> steps[] = {
        {MediaPlayer::Transitioning, u"Direct FM ... Preparing new media 9"_s},
        {MediaPlayer::Buffering, u"Direct FM ... Media is being buffered 6"_s},
        {MediaPlayer::Playing, u"Playing: Direct FM"_s},
        {MediaPlayer::Paused, u"Paused: Direct FM"_s},
        {MediaPlayer::Ready, u"Paused: Direct FM"_s},
        {MediaPlayer::Reconnecting, u"Direct FM ... Reconnecting 11"_s},
        {MediaPlayer::Stopped, QString()},
        {MediaPlayer::Playing, QString()}};
    for (const auto &[state, text] : steps) {
        wmp1.enter(state);
        EXPECT_EQ(caption(), text) << state;
    }
    EXPECT_EQ(told(looks), u"Stop"_s) << "stopped by the player";
    EXPECT_EQ(wmp1.URL(), QString());
    EXPECT_EQ(told(states), u"9,6,3,2,10,11,1,3"_s);
}

TEST_F(MainPlayerTest, PlayResumesAPauseMuteHoldsThroughVolumeAndStopEndsAStationCheck)
{
    press(Direct);
    player.playKey(u"Pause"_s);
    ASSERT_TRUE(waitForState(MediaPlayer::Paused));
    wmp1.log.clear();
    player.playKey(u"Play"_s);
    EXPECT_EQ(wmp1.log, QStringList{u"play"_s});
    EXPECT_EQ(traced.last(), u"PlayBar1: Key = Play, wmp1.Status=scripted 2"_s);
    QSignalSpy volumes(&player, &MainPlayer::volumeChanged);
    player.playKey(u"Mute"_s);
    player.setVolume(40);
    player.setVolume(40);
    EXPECT_EQ(told(volumes), u"40"_s) << "told once";
    EXPECT_EQ(wmp1.volume(), 40);
    EXPECT_TRUE(wmp1.mute());
    player.playKey(u"NoMute"_s);
    EXPECT_FALSE(wmp1.mute());
    player.playKey(u"Rewind"_s);
    EXPECT_EQ(traced.last(), u"PlayBar1: Key = Rewind, wmp1.Status=scripted 2"_s);
    EXPECT_EQ(wmp1.log, QStringList{u"play"_s}) << "an unknown key only leaves its trace";
    player.setScanning(true);
    player.stopPlayback();
    EXPECT_TRUE(player.scanning()) << "only the key ends a check";
    player.playKey(u"Stop"_s);
    EXPECT_FALSE(player.scanning());
    EXPECT_EQ(wmp1.log.last(), u"URL="_s);
}

TEST_F(MainPlayerTest, APlaylistOnItsWayOutlastsAStaleStopButNotAStopOrSilence)
{
    press(Direct);
    player.playKey(u"Pause"_s);
    ASSERT_TRUE(waitForState(MediaPlayer::Paused));
    player.stopPlayback();
    press(Direct);
    EXPECT_EQ(wmp1.log.last(), u"URL=http://127.0.0.1:9/direct"_s) << "started, not resumed";
    // wmp1 tells the stop while the playlist is fetched: the start goes on.
    wmp1.enter(MediaPlayer::Playing);
    player.stopPlayback();
    states.clear();
    press(Listed);
    EXPECT_EQ(player.playState(), MediaPlayer::Transitioning);
    EXPECT_EQ(told(states), u"9"_s);
    EXPECT_TRUE(waitUntil([&] { return wmp1.URL() == u"http://one.test/s"; }, 5000));
    EXPECT_EQ(caption(), u"Scanning for: Listed FM"_s);
    EXPECT_EQ(told(states), u"9,1"_s) << "preparing while fetched, then wmp1's own state";
    // Another station started while the playlist is on its way: the playlist is dropped.
    player.stopPlayback();
    press(Listed);
    press(Direct);
    EXPECT_NE(player.playState(), MediaPlayer::Transitioning) << "no fetch left to replace the address";
    EXPECT_EQ(wmp1.URL(), u"http://127.0.0.1:9/direct"_s);
    EXPECT_EQ(caption(), u"Connecting to: Direct FM"_s);
    // Silenced while the playlist is on its way: nothing starts after.
    press(Listed);
    wmp1.log.clear();
    player.silence();
    EXPECT_EQ(wmp1.log, QStringList({u"close"_s, u"URL="_s, u"stop"_s}));
    EXPECT_NE(player.playState(), MediaPlayer::Transitioning);
    // A download under another key fails with a question mark.
    player.findChild<FileDL *>(u"FileDLMain"_s)->BeginDownload(QUrl(server.url(u"/other.pls"_s)), u"OTHER"_s);
    EXPECT_TRUE(waitUntil([&] { return caption() == u"?"; }, 5000)) << caption().toStdString();
    EXPECT_FALSE(wmp1.log.contains(u"URL=http://one.test/s"_s));
}

TEST_F(MainPlayerTest, TheSongNamedByTheStreamFollowsTheStationInTheCaption)
{
    QSignalSpy songs(&player, &MainPlayer::songChanged);
    const auto song = [&] {
        return songs.isEmpty() ? u"(none)"_s
                               : songs.last().at(0).toString() + u'|' + songs.last().at(1).toString();
    };
    emit wmp1.titleChanged(u"Before - Anything"_s);
    EXPECT_TRUE(songs.isEmpty()) << "no station, no song";
    press(Direct);
    EXPECT_EQ(song(), u"Direct FM|"_s);
    emit wmp1.titleChanged(u"  Miles   Davis - So What "_s);
    EXPECT_EQ(song(), u"Direct FM|Miles Davis - So What"_s);
    EXPECT_EQ(caption(), u"Connecting to: Direct FM"_s) << "the song waits for the playing state";
    const std::pair<int, QString> steps[] = {
        {MediaPlayer::Playing, u"Playing: Direct FM \u2014 Miles Davis - So What"_s},
        {MediaPlayer::Paused, u"Paused: Direct FM"_s},
        {MediaPlayer::Playing, u"Playing: Direct FM \u2014 Miles Davis - So What"_s}};
    for (const auto &[state, text] : steps) {
        wmp1.enter(state);
        EXPECT_EQ(caption(), text) << state;
    }
    emit wmp1.titleChanged(QString());
    EXPECT_EQ(caption(), u"Playing: Direct FM"_s);
    EXPECT_EQ(player.songTitle(), QString());
    const qsizetype told = songs.size();
    emit wmp1.titleChanged(QString());
    EXPECT_EQ(songs.size(), told) << "only changes are told";
    player.playKey(u"Stop"_s);
    EXPECT_EQ(song(), u"|"_s);
    EXPECT_EQ(player.stationName(), QString());
}

TEST_F(MainPlayerTest, AStationThatFailsOrDoesNotStartStopsAndSaysWhy)
{
    server.songs = {{"Artist - Song", 2}};
    server.repeat = true;
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0));
    player.setTimeLimits(300, 400);
    const auto giveUp = [](ScriptedPlayer &media) { media.enterLater(MediaPlayer::Ready); };
    const struct
    {
        QString address;
        std::function<void(ScriptedPlayer &)> media; // none: it never starts
        QString reason;
    } rows[] = {
        {u"http://127.0.0.1:%1/"_s.arg(IcyServer::refusedPort()), giveUp, u"Cannot reach 127.0.0.1"_s},
        {server.url(u"/gone.pls"_s), {}, u"The station answered 404"_s},
        {u"http://127.0.0.1:%1/"_s.arg(silent.serverPort()), {}, u"No answer from 127.0.0.1 within 1 s"_s},
        {server.url(), giveUp, u"Direct FM cannot be played: scripted 10"_s},
        {server.url(), {}, u"Direct FM sends a stream, but it did not start within 0 s"_s},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.reason.toStdString());
        stations[Direct].StreamURL = r.address;
        wmp1.onOpen = r.media;
        looks.clear();
        press(Direct);
        EXPECT_TRUE(waitUntil([&] { return caption() == r.reason; }, 5000)) << caption().toStdString();
        EXPECT_EQ(told(looks), u"Stop"_s) << "back to stopped";
        EXPECT_EQ(wmp1.URL(), QString());
        EXPECT_NE(player.playState(), MediaPlayer::Transitioning);
    }
    // An address the directory plays fails the same way.
    wmp1.onOpen = giveUp;
    player.playAddress(u"http://127.0.0.1:%1/"_s.arg(IcyServer::refusedPort()), u"Found FM"_s);
    EXPECT_TRUE(waitUntil([&] { return caption() == u"Cannot reach 127.0.0.1"_s; }, 5000))
        << caption().toStdString();
    // Another station started while a failure is looked into: the old reason never comes.
    stations[Direct].StreamURL = u"http://127.0.0.1:%1/"_s.arg(silent.serverPort());
    wmp1.onOpen = {};
    press(Direct);
    ASSERT_TRUE(waitUntil([&] { return player.findChild<StreamProbe *>()->running(); }, 5000));
    player.playAddress(server.url(), u"Found FM"_s);
    EXPECT_FALSE(player.findChild<StreamProbe *>()->running());
    EXPECT_EQ(caption(), u"Connecting to: Found FM"_s);
    wmp1.enter(MediaPlayer::Playing);
    EXPECT_EQ(caption(), u"Playing: Found FM"_s);
    player.stop();
    // A station check goes on without waiting for reasons.
    player.setScanning(true);
    captions.clear();
    press(Direct);
    EXPECT_TRUE(waitUntil([&] { return wmp1.URL().isEmpty(); }, 5000));
    EXPECT_EQ(caption(), QString());
}

} // namespace
