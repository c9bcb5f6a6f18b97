#include "ui/stations/stationcheck.h"

#include "controls/lynxgrid.h"
#include "support/stationwindow.h"
#include "support/icyserver.h"
#include "ui/player/qtmediaplayer.h"
#include "player/stationplayer.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int wait = 10000;

TEST(StationCheckRating, APollRatesWhatThePlayerReached)
{
    const struct
    {
        int state, polls, rating;
    } rows[] = {
        {MediaPlayer::Playing, 1, 4},   {MediaPlayer::Buffering, 7, 3}, {MediaPlayer::Stopped, 1, 2},
        {MediaPlayer::Ready, 2, 0},     {MediaPlayer::Ready, 101, 1},   {MediaPlayer::Transitioning, 100, 0},
        {MediaPlayer::Waiting, 101, 1}, {MediaPlayer::Playing, 101, 4}, {MediaPlayer::Undefined, 102, 1}};
    for (const auto &row : rows)
        EXPECT_EQ(StationCheck::ratingFor(row.state, row.polls, 101), row.rating)
            << row.state << "/" << row.polls;
}

// Stations whose address names what the scripted player does with them.
class CheckTest : public StationWindowTest
{
public:
    void SetUp() override
    {
        StationWindowTest::SetUp();
        writeCatalogue(u"Zero|Pop|128|mp3||o|False|5|||http://s/play|i\r\n"
                       "Buffers|Pop|128|mp3||o|False|5|||http://s/buffer|i\r\n"
                       "Stops|Pop|128|mp3||o|False|5|||http://s/stop|i\r\n"
                       "Fails|Pop|128|mp3||o|False|5|||http://s/fail|i\r\n"
                       "Silent|Pop|128|mp3||o|False|5|||http://s/never|http://i/silent\r\n"
                       "No Address|Pop|128|mp3||o|False|5||||i\r\n"
                       "Plays|Pop|128|mp3||o|False|5|||http://s/play|i\r\n"_s);
        ASSERT_NO_FATAL_FAILURE(open());
        wmp1 = players[0];
        wmp1->onOpen = [](ScriptedPlayer &p) {
            p.enterLater(MediaPlayer::Transitioning);
            const QHash<QString, int> reached{{u"play"_s, MediaPlayer::Playing},
                                              {u"buffer"_s, MediaPlayer::Buffering},
                                              {u"stop"_s, MediaPlayer::Stopped},
                                              {u"fail"_s, MediaPlayer::Ready}};
            if (const QString what = p.URL().section(u'/', -1); reached.contains(what))
                p.enterLater(reached[what]);
        };
        check = window->findChild<StationCheck *>();
        ASSERT_NE(check, nullptr);
        state->catalogue.dirty = false;
    }
    // Clicks Info from row with a key held and waits for the check to end.
    void runCheck(int row, quint32 key)
    {
        QSignalSpy finished(check, &StationCheck::finished);
        grid->GotoCell(row, 1);
        wmp1->log.clear();
        click("cmdInfo", key);
        ASSERT_TRUE(finished.wait(wait));
    }
    // The addresses the player was given to play, by their last part.
    QString played() const
    {
        QStringList names;
        for (const QString &entry : wmp1->log) {
            if (entry.startsWith(u"URL=http"))
                names << entry.section(u'/', -1);
        }
        return names.join(u',');
    }
    QString ratings() const
    {
        QStringList list;
        for (int index = 1; index <= state->catalogue.stationCount(); ++index)
            list << QString::number(state->catalogue.at(index).Rating);
        return list.join(u',');
    }
    ScriptedPlayer *wmp1 = nullptr;
    StationCheck *check = nullptr;
};

TEST_F(CheckTest, LeftShiftRatesEveryStationFromTheCurrentOneAndOneStepPastTheEnd)
{
    runCheck(1, leftShiftKey);
    // A station the player gave up on (Ready) is rated as one that never answered.
    EXPECT_EQ(ratings(), u"5,3,2,1,1,2,4"_s);
    EXPECT_EQ(shown(Col::ColRating), u"5,3,2,1,1,2,4"_s);
    // The last station is played once more: the grid has no row past the end.
    EXPECT_EQ(played(), u"buffer,stop,fail,never,play,play"_s);
    EXPECT_FALSE(state->catalogue.dirty);
    EXPECT_FALSE(window->player().scanning());
    EXPECT_EQ(grid->Row(), 6);
}

TEST_F(CheckTest, LeftCtrlStopsAtTheFirstStationThatPlaysAndLeavesItPlaying)
{
    runCheck(2, leftControlKey);
    EXPECT_EQ(ratings(), u"5,5,2,1,1,2,4"_s);
    EXPECT_EQ(played(), u"stop,fail,never,play"_s);
    EXPECT_EQ(grid->Row(), 6);
    EXPECT_EQ(wmp1->playState(), MediaPlayer::Playing);
    // Buffering counts as playing.
    runCheck(1, leftControlKey);
    EXPECT_EQ(played(), u"buffer"_s);
}

TEST_F(CheckTest, ASecondCheckClickStopsTheCheckAtItsNextRowAPlainClickOpensThePage)
{
    QSignalSpy finished(check, &StationCheck::finished);
    grid->GotoCell(4, 1);
    click("cmdInfo", leftShiftKey);
    ASSERT_TRUE(check->running());
    click("cmdInfo");
    EXPECT_TRUE(check->running());
    EXPECT_EQ(shell.opened, QStringList{u"http://i/silent"_s});
    click("cmdInfo", leftControlKey);
    EXPECT_FALSE(window->player().scanning());
    EXPECT_EQ(wmp1->URL(), QString());
    ASSERT_TRUE(finished.wait(wait));
    EXPECT_EQ(played(), u"never"_s);
    // The station tried when the player was stopped is rated as stopped; the rest is untouched.
    EXPECT_EQ(ratings(), u"5,5,5,5,2,5,5"_s);
    EXPECT_EQ(shell.opened.size(), 1) << "the check's click only stopped the check";
    // So does the play bar's Stop; a new check may start while the old one still waits.
    click("cmdInfo", leftShiftKey);
    window->player().playKey(u"Stop"_s);
    click("cmdInfo", leftControlKey);
    ASSERT_TRUE(check->running());
    ASSERT_TRUE(finished.wait(wait));
    EXPECT_EQ(played(), u"never,never,never,play"_s);
}

TEST_F(CheckTest, ClosingOrEmptyingTheListDuringACheckEndsItCleanly)
{
    // Emptied: the station being tried is gone, and nothing is rated.
    QSignalSpy finished(check, &StationCheck::finished);
    grid->GotoCell(4, 1);
    click("cmdInfo", leftShiftKey);
    prompt.answers = {true};
    click("cmdDel", rightShiftKey);
    ASSERT_TRUE(finished.wait(wait));
    EXPECT_EQ(state->catalogue.stationCount(), 0);
    // Closed: the check ends with the window, which saves what changed.
    writeCatalogue(u"Silent|Pop|128|mp3||o|False|5|||http://s/never|i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    check = window->findChild<StationCheck *>();
    grid->GotoCell(0, 1);
    click("cmdCopy");
    click("cmdInfo", leftShiftKey);
    ASSERT_TRUE(check->running());
    window->close();
    EXPECT_TRUE(windows.ended);
    EXPECT_FALSE(check->running());
    for (const QTimer *timer : check->findChildren<QTimer *>())
        EXPECT_FALSE(timer->isActive());
    EXPECT_EQ(catalogueText().count(u"Silent|"_s), 2);
}

// The real player against three stations on 127.0.0.1.
TEST_F(StationWindowTest, TheCheckRatesLoopbackStationsThroughTheRealPlayer)
{
    IcyServer server;
    const QByteArray sample = IcyServer::dataFile(u"sample.mp3"_s);
    ASSERT_FALSE(sample.isEmpty());
    server.pages["/sample.mp3"] = IcyServer::page(sample);
    ASSERT_TRUE(server.start());
    // Takes connections and never answers them.
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    const quint16 refused = IcyServer::refusedPort();
    writeCatalogue(u"Silent|Pop|128|mp3||o|False|5|||http://127.0.0.1:%1/stream|i\r\n"
                   "Refuses|Pop|128|mp3||o|False|5|||http://127.0.0.1:%2/stream|i\r\n"
                   "Plays|Pop|128|mp3||o|False|5|||%3|i\r\n"_s.arg(silent.serverPort())
                       .arg(refused)
                       .arg(server.url(u"/sample.mp3"_s)));
    // Three seconds for the station that never answers, time enough for the others.
    checkTiming = {100, 30};
    ASSERT_NO_FATAL_FAILURE(open(QtMediaPlayer::create));
    auto *check = window->findChild<StationCheck *>();
    QSignalSpy finished(check, &StationCheck::finished);
    grid->GotoCell(0, 1);
    click("cmdInfo", leftShiftKey);
    ASSERT_TRUE(finished.wait(4 * wait));
    EXPECT_EQ(state->catalogue.at(1).Rating, StationCheck::RatingNoAnswer);
    // Refused: the player gives up at Ready, which is no answer either.
    EXPECT_EQ(state->catalogue.at(2).Rating, StationCheck::RatingNoAnswer);
    EXPECT_GE(state->catalogue.at(3).Rating, StationCheck::RatingBuffering);
    EXPECT_EQ(shown(Col::ColRating).section(u',', 0, 1), u"1,1"_s);
}

} // namespace
