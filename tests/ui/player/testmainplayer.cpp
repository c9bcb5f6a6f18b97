#include "ui/player/mainplayer.h"

#include "catalogue/filedl.h"
#include "controls/lynxgrid.h"
#include "controls/picturebutton.h"
#include "controls/slider.h"
#include "support/stationwindow.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "ui/player/frmlisten.h"
#include "ui/player/ucplaybar.h"

#include <QComboBox>
#include <QDate>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

enum Row
{
    Direct,
    NoAddress,
    Listed,
    Empty,
    Gone
};

// The main window's player, driven through the play bar and the grid's play
// cell, with a scripted wmp1 and playlists served on 127.0.0.1.
class MainPlayerTest : public StationWindowTest
{
protected:
    void SetUp() override
    {
        StationWindowTest::SetUp();
        server.pages["/list.PLS"] =
            IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=http://one.test/s\r\n"
                            "Title1=(#1 - 1/100) One\r\nLength1=-1\r\nVersion=2\r\n");
        server.pages["/empty.pls"] = IcyServer::page("[playlist]\r\nnumberofentries=0\r\n\r\n\r\n");
        ASSERT_TRUE(server.start());
        writeCatalogue(u"Direct FM|Rock|128|mp3||o|True|3|||http://127.0.0.1:9/direct|i\r\n"
                       "No Address|Rock|128|mp3||o|True|3|||||i\r\n"
                       "Listed FM|Pop|128|mp3||o|True|3|||%1|i\r\n"
                       "Empty List|Pop|128|mp3||o|True|3|||%2|i\r\n"
                       "Gone FM|Pop|128|mp3||o|True|3|||%3|i\r\n"_s.arg(server.url(u"/list.PLS"_s),
                                                                        server.url(u"/empty.pls"_s),
                                                                        server.url(u"/gone.pls"_s)));
        state->trace = TraceHook([this](const QString &line) { traced << line; });
        ASSERT_NO_FATAL_FAILURE(open());
        ASSERT_EQ(players.size(), 2) << "the window's own player and the warm-up's";
        wmp1 = players[0];
        bar = child<ucPlayBar>("ucPlayBar1");
    }
    ucPictureButton *button(const char *name) const
    {
        return bar->findChild<ucPictureButton *>(QLatin1StringView(name));
    }
    bool playingLook() const { return button("cmdDSPause")->x() == ucPlayBar::ShownLeft; }
    void press(Row row)
    {
        grid->setRow(int(row));
        button("cmdDSPlay")->click();
    }
    IcyServer server;
    QStringList traced;
    ScriptedPlayer *wmp1 = nullptr;
    ucPlayBar *bar = nullptr;
};

TEST_F(MainPlayerTest, PlayStartsTheCurrentStationOrSaysWhyNot)
{
    const struct
    {
        Row row;
        QString caption; // once the start has settled
        QString played;  // the address given to wmp1
        bool playingLook;
    } rows[] = {{Direct, u"Connecting to: Direct FM"_s, u"http://127.0.0.1:9/direct"_s, true},
                {NoAddress, u"Not StreamUrl Defined for: & No Address"_s, {}, false},
                {Listed, u"Scanning for: Listed FM"_s, u"http://one.test/s"_s, true},
                {Empty, u"Station is not available: Empty List"_s, {}, false},
                {Gone, u"PLS error: 0: An Error Has Occurred."_s, {}, true}};
    for (const auto &row : rows) {
        wmp1->log.clear();
        press(row.row);
        EXPECT_TRUE(
            waitUntil([&] { return bar->Caption() == row.caption && wmp1->URL() == row.played; }, 5000))
            << int(row.row) << ": " << bar->Caption().toStdString() << " / " << wmp1->URL().toStdString();
        EXPECT_EQ(playingLook(), row.playingLook) << int(row.row);
        EXPECT_EQ(wmp1->log.value(0), u"clear"_s) << int(row.row);
        // Back to idle for the next row.
        button("cmdDSStop")->click();
        ASSERT_TRUE(waitUntil([&] { return wmp1->playState() == MediaPlayer::Stopped; }, 2000));
    }
    EXPECT_EQ(bar->toolTip(), u"Stream: http://one.test/s"_s);
    // A filter that keeps no station leaves no current row.
    window->findChild<QComboBox *>(u"cmbType"_s)->setCurrentText(u"TV"_s);
    window->findChild<QPushButton *>(u"cmdFilter"_s)->click();
    ASSERT_EQ(grid->Row(), -1);
    wmp1->log.clear();
    button("cmdDSPlay")->click();
    EXPECT_FALSE(playingLook()) << "nothing to start without a current row";
    EXPECT_TRUE(wmp1->log.isEmpty());
}

TEST_F(MainPlayerTest, ThePlayersStatesShowInTheCaption)
{
    press(Direct);
    const std::pair<int, QString> states[] = {
        {MediaPlayer::Transitioning, u"Direct FM ... Preparing new media 9"_s},
        {MediaPlayer::Buffering, u"Direct FM ... Media is being buffered 6"_s},
        {MediaPlayer::Playing, u"Playing: Direct FM"_s},
        {MediaPlayer::Paused, u"Paused: Direct FM"_s},
        {MediaPlayer::Ready, u"Paused: Direct FM"_s},
        {MediaPlayer::Reconnecting, u"Direct FM ... Reconnecting 11"_s},
        {MediaPlayer::Stopped, QString()},
        {MediaPlayer::Playing, QString()}};
    for (const auto &[s, caption] : states) {
        wmp1->enter(s);
        EXPECT_EQ(bar->Caption(), caption) << s;
    }
    EXPECT_FALSE(playingLook()) << "stopped by the player";
    EXPECT_EQ(wmp1->URL(), QString());
}

TEST_F(MainPlayerTest, PlayResumesAPauseMuteHoldsThroughVolumeAndStopEndsAStationCheck)
{
    press(Direct);
    button("cmdDSPause")->click();
    ASSERT_TRUE(waitUntil([&] { return wmp1->playState() == MediaPlayer::Paused; }, 2000));
    wmp1->log.clear();
    button("cmdDSPlay")->click();
    EXPECT_EQ(wmp1->log, QStringList{u"play"_s});
    EXPECT_EQ(traced.last(), u"PlayBar1: Key = Play, wmp1.Status=scripted 2"_s);
    button("cmdDSMute")->click();
    bar->findChild<ucSlider *>(u"ucSlider1"_s)->setValue(40);
    EXPECT_EQ(wmp1->volume(), 40);
    EXPECT_TRUE(wmp1->mute());
    button("cmdDSMute")->click();
    EXPECT_FALSE(wmp1->mute());
    EXPECT_EQ(traced.last(), u"PlayBar1: Key = NoMute, wmp1.Status=scripted 2"_s);
    window->player().SetScanning(true);
    button("cmdDSStop")->click();
    EXPECT_FALSE(window->player().Scanning());
    EXPECT_EQ(wmp1->log.last(), u"URL="_s);
}

TEST_F(MainPlayerTest, AStationStartedRightAfterAStopStartsInsteadOfResumingOrStopping)
{
    StationPlayer &player = window->player();
    press(Direct);
    button("cmdDSPause")->click();
    ASSERT_TRUE(waitUntil([&] { return wmp1->playState() == MediaPlayer::Paused; }, 2000));
    player.StopPlayback();
    press(Direct);
    EXPECT_EQ(wmp1->log.last(), u"URL=http://127.0.0.1:9/direct"_s) << "not resumed";
    // The stop arrives while the playlist is fetched: it must not end the start.
    wmp1->enter(MediaPlayer::Playing);
    player.StopPlayback();
    press(Listed);
    EXPECT_EQ(player.PlayState(), MediaPlayer::Transitioning);
    EXPECT_TRUE(waitUntil([&] { return wmp1->URL() == u"http://one.test/s"; }, 5000));
    EXPECT_EQ(bar->Caption(), u"Scanning for: Listed FM"_s);
}

TEST_F(MainPlayerTest, ADownloadErrorUnderAnotherKeyShowsAQuestionMark)
{
    auto *download = window->findChild<FileDL *>(u"FileDLMain"_s);
    ASSERT_NE(download, nullptr);
    download->BeginDownload(QUrl(server.url(u"/other.pls"_s)), u"OTHER"_s);
    EXPECT_TRUE(waitUntil([&] { return bar->Caption() == u"?"; }, 5000)) << bar->Caption().toStdString();
}

TEST_F(MainPlayerTest, ThePlayCellPlaysItsRowAndShowsThePlayingLook)
{
    const auto playCell = [&](Row row) {
        grid->setRow(int(row));
        return grid->EditCell(int(row), grid->ColPosition(FrmStations::ColPlay));
    };
    EXPECT_FALSE(playCell(Direct)) << "no edit";
    EXPECT_EQ(wmp1->URL(), u"http://127.0.0.1:9/direct"_s);
    EXPECT_TRUE(playingLook());
    // Even when nothing could start, the cell leaves the playing look.
    EXPECT_FALSE(playCell(NoAddress));
    EXPECT_EQ(bar->Caption(), u"Not StreamUrl Defined for: & No Address"_s);
    EXPECT_TRUE(playingLook());
}

TEST_F(MainPlayerTest, AStationPlayingInAListeningWindowGetsTodaysDate)
{
    state->catalogue.dirty = false;
    window->stationPlayed(2, int(Listed), u"2030-01-01"_s);
    window->stationPlayed(FrmListen::PlayedKind, 99, u"2030-01-01"_s);
    EXPECT_FALSE(state->catalogue.dirty) << "other kinds and rows change nothing";
    FrmListen *listen = window->createListenWindow();
    listen->ListenRow = int(Listed);
    listen->ListenUrl = u"http://127.0.0.1:9/direct"_s;
    listen->Play();
    players.last()->enter(MediaPlayer::Playing);
    const QString today = QDate::currentDate().toString(Qt::ISODate);
    EXPECT_EQ(state->catalogue.at(int(Listed) + 1).LastDate, today);
    EXPECT_EQ(grid->CellText(int(Listed), grid->ColPosition(FrmStations::ColLastDate)), today);
    EXPECT_TRUE(state->catalogue.dirty);
    listen->close();
}

TEST_F(MainPlayerTest, LoadStartsAHiddenWarmUpWindowOnTheInstalledVideo)
{
    FrmListen *warmUp = nullptr;
    for (FrmListen *listen : window->findChildren<FrmListen *>()) {
        if (listen->ListenRow == FrmListen::WarmUpRow)
            warmUp = listen;
    }
    ASSERT_NE(warmUp, nullptr);
    EXPECT_FALSE(warmUp->isVisible());
    EXPECT_EQ(warmUp->x(), FrmListen::WarmUpLeft);
    EXPECT_EQ(players[1]->log, QStringList({u"URL="_s + profile.installFolder() + u"/miniTC.avi"_s,
                                            u"playCount=1000000000"_s, u"pause"_s}));
    EXPECT_FALSE(wmp1->view()->isVisible()) << "wmp1 is kept out of sight";
}

} // namespace
