#include "ui/player/frmlisten.h"

#include "base/launchoptions.h"
#include "base/themecolors.h"
#include "support/scriptedplayer.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/tempprofile.h"

#include <QContextMenuEvent>
#include <QDate>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class ListenTest : public ProfileTest
{
protected:
    void SetUp() override
    {
        server.pages["/two.pls"] =
            IcyServer::page("[playlist]\r\nnumberofentries=2\r\nFile1=http://full.test/a\r\n"
                            "Title1=(#1 - 95/100) A\r\nLength1=-1\r\nFile2=http://room.test/b\r\n"
                            "Title2=(#2 - 10/100) B\r\nLength2=-1\r\nVersion=2\r\n");
        server.pages["/two.PLS"] = server.pages["/two.pls"];
        server.pages["/none.pls"] = IcyServer::page("[playlist]\r\nnumberofentries=0\r\nVersion=2\r\n");
        server.pages["/page.html?.pls"] = IcyServer::page("<html><body>No playlist here</body></html>");
        ASSERT_TRUE(server.start());
        open();
    }
    void open(int row = 4, const QString &url = u"http://127.0.0.1:9/stream"_s)
    {
        players.clear();
        window = std::make_unique<FrmListen>(launch, Themes::blackNight(), [this](QWidget *owner) {
            return new PlayerView(players.emplace_back(new ScriptedPlayer), nullptr, owner);
        });
        ASSERT_EQ(players.size(), 1);
        player = players[0];
        view = window->findChild<PlayerView *>(u"MPlayer"_s);
        window->ListenRow = row;
        window->ListenUrl = url;
        window->ListenTitle = u"Test FM"_s;
        window->show();
    }
    QString caption() const { return window->windowTitle(); }
    QString info() const { return window->findChild<QLabel *>(u"lblInfo"_s)->text(); }
    QPushButton *button(const char *name) const
    {
        return window->findChild<QPushButton *>(QLatin1StringView(name));
    }
    int opened(const QString &url) const { return int(player->log.count(u"URL="_s + url)); }
    IcyServer server;
    LaunchOptions launch;
    QList<ScriptedPlayer *> players;
    std::unique_ptr<FrmListen> window;
    ScriptedPlayer *player = nullptr;
    PlayerView *view = nullptr;
};

TEST_F(ListenTest, TheAddressDecidesTheCaptionAndWhatIsPlayed)
{
    const struct
    {
        QString url, caption;
        QString played; // the address given to the player; empty for none
    } rows[] = {{u"http://127.0.0.1:9/stream"_s, u"Connecting to: Test FM"_s, u"http://127.0.0.1:9/stream"_s},
                {u"/home/u/Rec/Test FM_2024.MP3"_s, u"Playing: Test FM"_s, u"/home/u/Rec/Test FM_2024.MP3"_s},
                {server.url(u"/two.PLS"_s), u"Scanning for: Test FM"_s, {}},
                {{}, u"Stream missing: Test FM"_s, {}}};
    for (const auto &row : rows) {
        ASSERT_NO_FATAL_FAILURE(open(4, row.url));
        window->Play();
        EXPECT_EQ(caption(), row.caption);
        EXPECT_EQ(player->URL(), row.played);
    }
    // A missing address leaves no player on view.
    EXPECT_EQ(player->log, QStringList{u"URL="_s});
    EXPECT_FALSE(view->isVisible());
    EXPECT_EQ(view->height(), 0);
}

TEST_F(ListenTest, APlaylistIsFetchedAndItsFreeServerPlayedOrItsFailureShown)
{
    const struct
    {
        const char *path;
        QString caption, played;
    } rows[] = {
        {"/two.pls", u"Playing: Test FM"_s, u"http://room.test/b"_s}, // without the playlist line's CR
        {"/none.pls", u"Station is not available: Test FM"_s, {}},
        {"/gone.pls", u"PLS error: 0: An Error Has Occurred."_s, {}},
        {"/page.html?.pls", u"Station is not available: Test FM"_s, {}}};
    for (const auto &row : rows) {
        ASSERT_NO_FATAL_FAILURE(open(4, server.url(QLatin1StringView(row.path))));
        window->Play();
        EXPECT_EQ(info(), u"Query: "_s + window->ListenUrl);
        EXPECT_TRUE(waitUntil([&] { return caption() == row.caption; }, 5000))
            << row.path << ": " << caption().toStdString();
        EXPECT_EQ(player->URL(), row.played) << row.path;
        if (!row.played.isEmpty()) {
            EXPECT_EQ(info(), u"Stream: "_s + row.played);
        }
    }
}

TEST_F(ListenTest, AStreamThatFallsBackIsTriedFiveTimesThenGivenUp)
{
    // As the real player does on every new address: preparing, then back to ready.
    player->onOpen = [](ScriptedPlayer &p) {
        p.enterLater(MediaPlayer::Transitioning);
        p.enterLater(MediaPlayer::Ready);
    };
    QSignalSpy played(window.get(), &FrmListen::StationPlayed);
    window->Play();
    const QString url = window->ListenUrl;
    ASSERT_TRUE(waitUntil([&] { return caption().startsWith(u"Unable"); }, 5000)) << caption().toStdString();
    EXPECT_EQ(caption(), u"Unable to load "_s + url);
    EXPECT_EQ(opened(url), 6) << "the first time and five retries: " << player->log.join(u' ').toStdString();
    EXPECT_EQ(player->log.last(), u"URL="_s);
    // Given up: later states change nothing.
    player->log.clear();
    for (const int state : {MediaPlayer::Ready, MediaPlayer::Playing})
        player->enter(state);
    EXPECT_TRUE(player->log.isEmpty());
    EXPECT_EQ(played.size(), 0);
}

TEST_F(ListenTest, ACatalogueStationReportsEachStartOfPlaying)
{
    const struct
    {
        int row;
        bool launched;
        int reports;
    } rows[] = {{4, false, 2}, {0, false, 2}, {FrmListen::FileRow, false, 0}, {4, true, 0}};
    for (const auto &row : rows) {
        ASSERT_NO_FATAL_FAILURE(open(row.row));
        launch.launchMode = row.launched;
        QSignalSpy played(window.get(), &FrmListen::StationPlayed);
        window->Play();
        for (const int s : {MediaPlayer::Transitioning, MediaPlayer::Playing, MediaPlayer::Buffering,
                            MediaPlayer::Playing, MediaPlayer::Paused})
            player->enter(s);
        ASSERT_EQ(played.size(), row.reports) << "row " << row.row;
        for (const auto &report : played)
            EXPECT_EQ(report, QVariantList({FrmListen::PlayedKind, row.row,
                                            QDate::currentDate().toString(Qt::ISODate)}));
    }
}

TEST_F(ListenTest, TheWarmUpPlayerIsPausedAgainWheneverItMoves)
{
    ASSERT_NO_FATAL_FAILURE(open(FrmListen::WarmUpRow));
    window->Play();
    player->log.clear();
    player->enter(MediaPlayer::Playing);
    EXPECT_EQ(player->log, QStringList({u"playCount=1000000000"_s, u"pause"_s}));
    player->log.clear();
    player->enter(MediaPlayer::Paused);
    EXPECT_TRUE(player->log.isEmpty());
}

TEST_F(ListenTest, EscapeLeavesFullScreenFirstAndThenClosesStoppingAnyRetry)
{
    window->Play();
    button("cmdFullScreen")->click();
    EXPECT_FALSE(player->fullScreen()) << "only a playing player goes full screen";
    player->enter(MediaPlayer::Playing);
    button("cmdFullScreen")->click();
    ASSERT_TRUE(player->fullScreen());
    QTest::keyClick(view, Qt::Key_Escape);
    EXPECT_FALSE(player->fullScreen());
    EXPECT_TRUE(window->isVisible());
    button("cmdFullScreen")->click();
    QTest::keyClick(window.get(), Qt::Key_A);
    EXPECT_FALSE(player->fullScreen()) << "any key to the window leaves full screen";
    // Closed while retrying a stream that fell back: stopped for good.
    player->onOpen = [](ScriptedPlayer &p) { p.enterLater(MediaPlayer::Transitioning); };
    player->enter(MediaPlayer::Ready);
    ASSERT_EQ(opened(window->ListenUrl), 2) << "retrying";
    player->log.clear();
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(player->log, QStringList({u"URL="_s, u"stop"_s, u"close"_s}));
    player->enter(MediaPlayer::Ready);
    EXPECT_EQ(player->log.size(), 3) << "no retry after closing";
}

TEST_F(ListenTest, TheContextButtonTogglesThePlayersOwnMenu)
{
    const auto requestMenu = [&] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                                view->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(view, &event);
        return view->findChild<QMenu *>(u"PlayerMenu"_s);
    };
    QMenu *menu = requestMenu();
    ASSERT_NE(menu, nullptr) << "on at first";
    QStringList items;
    for (QAction *action : menu->actions())
        items << action->text();
    EXPECT_EQ(items.join(u','), u"Play,Pause,Stop,Mute,Full Screen"_s);
    menu->actions().at(3)->trigger();
    EXPECT_TRUE(player->mute());
    menu->close();
    button("cmdContext")->click();
    EXPECT_FALSE(button("cmdContext")->isChecked());
    EXPECT_FALSE(view->enableContextMenu());
    delete menu;
    EXPECT_EQ(requestMenu(), nullptr);
    button("cmdContext")->click();
    EXPECT_TRUE(view->enableContextMenu());
}

} // namespace
