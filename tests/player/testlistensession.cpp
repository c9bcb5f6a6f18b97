#include "player/listensession.h"

#include "base/launchoptions.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedplayer.h"

#include <QDate>
#include <QSignalSpy>
#include <QTcpServer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString Stream = u"http://127.0.0.1:9/stream"_s;

QString last(const QSignalSpy &spy)
{
    return spy.isEmpty() ? QString() : spy.last().first().toString();
}

// A listening window's logic over a scripted player, with playlists served
// on 127.0.0.1 and what it asks of its window caught by spies.
class ListenSessionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server.pages["/two.pls"] =
            IcyServer::page("[playlist]\r\nnumberofentries=2\r\nFile1=http://full.test/a\r\n"
                            "Title1=(#1 - 95/100) A\r\nLength1=-1\r\nFile2=http://room.test/b\r\n"
                            "Title2=(#2 - 10/100) B\r\nLength2=-1\r\nVersion=2\r\n");
        server.pages["/none.pls"] = IcyServer::page("[playlist]\r\nnumberofentries=0\r\nVersion=2\r\n");
        server.pages["/page.html?.pls"] = IcyServer::page("<html><body>No playlist here</body></html>");
        ASSERT_TRUE(server.start());
    }
    QString caption() const { return last(captions); }
    int opened(const QString &url) const { return int(player.log.count(u"URL="_s + url)); }

    IcyServer server;
    LaunchOptions launch;
    ScriptedPlayer player;
    ListenSession session{launch, player};
    QSignalSpy captions{&session, &ListenSession::captionChanged};
    QSignalSpy infos{&session, &ListenSession::infoChanged};
    QSignalSpy views{&session, &ListenSession::viewRequested};
    QSignalSpy played{&session, &ListenSession::stationPlayed};
};

TEST_F(ListenSessionTest, TheAddressDecidesTheCaptionWhatIsPlayedAndTheView)
{
    const struct
    {
        QString url, caption, played, view; // view: "true" shown, "false" hidden, empty for no request
    } rows[] = {{Stream, u"Connecting to: Test FM"_s, Stream, u"true"_s},
                {u"/home/u/Rec/Test FM_2024.MP3"_s, u"Playing: Test FM"_s, u"/home/u/Rec/Test FM_2024.MP3"_s,
                 u"true"_s},
                {server.url(u"/two.PLS"_s), u"Scanning for: Test FM"_s, {}, {}},
                {{}, u"Stream missing: Test FM"_s, {}, u"false"_s}};
    for (const auto &row : rows) {
        player.setURL({});
        player.log.clear();
        views.clear();
        session.play(row.url, u"Test FM"_s, 4);
        EXPECT_EQ(caption(), row.caption);
        EXPECT_EQ(player.URL(), row.played);
        EXPECT_EQ(last(views), row.view);
    }
    EXPECT_EQ(player.log, QStringList{u"URL="_s}) << "a missing address empties the player";
}

TEST_F(ListenSessionTest, APlaylistIsFetchedAndItsFreeServerPlayedOrItsFailureShown)
{
    const std::pair<const char *, QString> rows[] = {
        {"/two.pls", u"Playing: Test FM"_s}, // the second entry, without the playlist line's CR
        {"/none.pls", u"Station is not available: Test FM"_s},
        {"/gone.pls", u"PLS error: 0: An Error Has Occurred."_s},
        {"/page.html?.pls", u"Station is not available: Test FM"_s}};
    for (const auto &[path, text] : rows) {
        const QString url = server.url(QLatin1StringView(path));
        player.setURL({});
        session.play(url, u"Test FM"_s, 4);
        EXPECT_EQ(last(infos), u"Query: "_s + url);
        EXPECT_TRUE(waitUntil([&] { return caption() == text; }, 5000))
            << path << ": " << caption().toStdString();
    }
    EXPECT_EQ(opened(u"http://room.test/b"_s), 1);
    EXPECT_TRUE(infos.contains(QVariantList{u"Stream: http://room.test/b"_s}));
    EXPECT_EQ(player.URL(), QString()) << "nothing played from the failed ones";
}

TEST_F(ListenSessionTest, AStreamThatFallsBackIsTriedFiveTimesThenGivenUp)
{
    // As the real player does on every new address: preparing, then back to ready.
    player.onOpen = [](ScriptedPlayer &p) {
        p.enterLater(MediaPlayer::Transitioning);
        p.enterLater(MediaPlayer::Ready);
    };
    session.play(Stream, u"Test FM"_s, 4);
    ASSERT_TRUE(waitUntil([&] { return caption().startsWith(u"Unable"); }, 5000)) << caption().toStdString();
    EXPECT_EQ(caption(), u"Unable to load "_s + Stream);
    EXPECT_EQ(opened(Stream), 6) << "the first time and five retries: "
                                 << player.log.join(u' ').toStdString();
    EXPECT_EQ(player.log.last(), u"URL="_s);
    // Given up: later states change nothing.
    player.log.clear();
    for (const int state : {MediaPlayer::Ready, MediaPlayer::Playing})
        player.enter(state);
    EXPECT_TRUE(player.log.isEmpty());
    EXPECT_EQ(played.size(), 0);
}

TEST_F(ListenSessionTest, ACatalogueStationReportsEachStartOfPlaying)
{
    const struct
    {
        int row;
        bool launched;
        int reports;
    } rows[] = {{4, false, 2}, {0, false, 2}, {ListenSession::FileRow, false, 0}, {4, true, 0}};
    const QVariantList report = {ListenSession::PlayedKind, 0, QDate::currentDate().toString(Qt::ISODate)};
    for (const auto &row : rows) {
        launch.launchMode = row.launched;
        played.clear();
        session.play(Stream, u"Test FM"_s, row.row);
        for (const int s : {MediaPlayer::Transitioning, MediaPlayer::Playing, MediaPlayer::Buffering,
                            MediaPlayer::Playing, MediaPlayer::Paused})
            player.enter(s);
        ASSERT_EQ(played.size(), row.reports) << "row " << row.row;
        for (const QVariantList &told : played)
            EXPECT_EQ(told, QVariantList({report[0], row.row, report[2]}));
    }
}

TEST_F(ListenSessionTest, TheSongJoinsTheCaptionAndOnlyStationsReportIt)
{
    QSignalSpy songs(&session, &ListenSession::songChanged);
    const struct
    {
        int row;
        QString caption; // once the stream names "A - B"
        int reports;
    } rows[] = {{2, u"Playing: Test FM \u2014 A - B"_s, 2},
                {ListenSession::FileRow, u"Playing: Test FM \u2014 A - B"_s, 0},
                {ListenSession::WarmUpRow, u"Connecting to: Test FM"_s, 0}};
    for (const auto &row : rows) {
        songs.clear();
        session.play(Stream, u"Test FM"_s, row.row);
        emit player.titleChanged(u" A  - B"_s);
        EXPECT_EQ(caption(), row.caption) << row.row;
        emit player.titleChanged(QString());
        EXPECT_EQ(caption(), row.caption) << "the caption keeps the last song";
        ASSERT_EQ(songs.size(), row.reports) << row.row;
        if (row.reports) {
            EXPECT_EQ(songs.first(), (QVariantList{u"Test FM"_s, u"A - B"_s}));
        }
    }
    session.close();
    emit player.titleChanged(u"After"_s);
    EXPECT_TRUE(songs.isEmpty());
}

TEST_F(ListenSessionTest, TheWarmUpPlayerStartsPausedOutOfSightAndIsPausedAgainWheneverItMoves)
{
    QSignalSpy hidden(&session, &ListenSession::outOfSightRequested);
    session.play(u"/opt/tunecatch/miniTC.avi"_s, {}, ListenSession::WarmUpRow);
    EXPECT_EQ(player.log,
              QStringList({u"URL=/opt/tunecatch/miniTC.avi"_s, u"playCount=1000000000"_s, u"pause"_s}));
    EXPECT_EQ(hidden.size(), 1);
    player.log.clear();
    player.enter(MediaPlayer::Playing);
    player.enter(MediaPlayer::Paused);
    EXPECT_EQ(player.log, QStringList({u"playCount=1000000000"_s, u"pause"_s})) << "not again once paused";
}

TEST_F(ListenSessionTest, EscapeLeavesFullScreenFirstAndClosingStopsAnyRetry)
{
    QSignalSpy closing(&session, &ListenSession::closeRequested);
    session.play(Stream, u"Test FM"_s, 4);
    session.enterFullScreen();
    EXPECT_FALSE(player.fullScreen()) << "only a playing player goes full screen";
    player.enter(MediaPlayer::Playing);
    session.enterFullScreen();
    ASSERT_TRUE(player.fullScreen());
    session.escape();
    EXPECT_FALSE(player.fullScreen());
    EXPECT_FALSE(session.leaveFullScreen());
    EXPECT_TRUE(closing.isEmpty());
    session.escape();
    EXPECT_EQ(closing.size(), 1);
    // Closed while retrying a stream that fell back: stopped for good.
    player.onOpen = [](ScriptedPlayer &p) { p.enterLater(MediaPlayer::Transitioning); };
    player.enter(MediaPlayer::Ready);
    ASSERT_EQ(opened(Stream), 2) << "retrying";
    player.log.clear();
    session.close();
    player.enter(MediaPlayer::Ready);
    EXPECT_EQ(player.log, QStringList({u"URL="_s, u"stop"_s, u"close"_s})) << "no retry after closing";
}

TEST_F(ListenSessionTest, AStreamGivenUpOrTooSlowStopsAndTheInformationLineSaysWhy)
{
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0));
    const auto fallBack = [](ScriptedPlayer &p) { p.enterLater(MediaPlayer::Ready); };
    const struct
    {
        QString address;
        std::function<void(ScriptedPlayer &)> media; // none: it never starts
        QString reason;
    } rows[] = {
        {u"http://127.0.0.1:%1/"_s.arg(IcyServer::refusedPort()), fallBack, u"Cannot reach 127.0.0.1"_s},
        {u"http://127.0.0.1:%1/"_s.arg(silent.serverPort()), {}, u"No answer from 127.0.0.1 within 1 s"_s},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.reason.toStdString());
        ScriptedPlayer media;
        media.onOpen = r.media;
        ListenSession fresh{launch, media};
        fresh.setTimeLimits(300, 400);
        QSignalSpy lines(&fresh, &ListenSession::infoChanged);
        QSignalSpy titles(&fresh, &ListenSession::captionChanged);
        fresh.play(r.address, u"Test FM"_s, 4);
        ASSERT_TRUE(waitUntil([&] { return !lines.isEmpty(); }, 5000));
        EXPECT_EQ(lines.last().first().toString(), r.reason);
        EXPECT_EQ(titles.last().first().toString(), u"Unable to load "_s + r.address);
        EXPECT_EQ(media.URL(), QString()) << "stopped";
    }
}

} // namespace
