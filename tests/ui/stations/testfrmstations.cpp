#include "support/stationwindow.h"

#include "base/settingsstore.h"
#include "controls/lynxgrid.h"
#include "controls/picturebutton.h"
#include "controls/schemebutton.h"
#include "controls/slider.h"
#include "support/accessiblenames.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "ui/player/frmlisten.h"
#include "ui/player/ucplaybar.h"

#include <QComboBox>
#include <QDate>
#include <QLineEdit>
#include <QMenuBar>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using StationsTest = StationWindowTest;
using Col = FrmStations::Column;

TEST_F(StationsTest, LoadShowsTheRowsInCatalogueOrderAndTheCategoriesFound)
{
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(shown(), allFive);
    EXPECT_EQ(shown(Col::ColRating), u"3,0,5,2,3"_s);
    QString single;
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(grid->ItemData(row), row + 1);
        single += grid->CellChecked(row, pos(Col::ColSingle)) ? u'1' : u'0';
    }
    EXPECT_EQ(single, u"10010"_s);
    auto *categories = child<QComboBox>("cmbCategory");
    QStringList items;
    for (int i = 0; i < categories->count(); ++i)
        items << categories->itemText(i);
    EXPECT_EQ(items.join(u','), u",Rock,Hard rock,Lounge,News,Oldies"_s);
    writeCatalogue({});
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(grid->Cols(), 13);
    EXPECT_EQ(grid->ItemCount(), 0);
    EXPECT_EQ(child<QComboBox>("cmbCategory")->count(), 1);
}

TEST_F(StationsTest, FiltersKeepTheirCaseRules)
{
    ASSERT_NO_FATAL_FAILURE(open());
    const struct
    {
        const char *genre, *category, *type, *rating;
        QString expected;
    } rows[] = {{"Rock", "", "", "", u"Rock One,Classic Hits"_s},
                // The category test alone is case-sensitive: "Hard rock" does not contain "Rock".
                {"", "Rock", "", "", u"Rock One"_s},
                {"", "", "MP3", "", u"Rock One,Classic Hits,Talk Radio,Rockabilly"_s},
                {"", "", "", "3", u"Rock One,Rockabilly"_s},
                {"Rock", "", "MP3", "3", u"Rock One"_s},
                {"", "", "", "", allFive}};
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.genre) + '/' + row.category + '/' + row.type + '/' + row.rating);
        filter(row.genre, row.category, row.type, row.rating);
        EXPECT_EQ(shown(), row.expected);
        EXPECT_EQ(state->filters.genre, QLatin1StringView(row.genre));
        EXPECT_EQ(state->filters.category, QLatin1StringView(row.category));
    }
}

TEST_F(StationsTest, StoredFiltersApplyAtLoadAndSelectTheirFirstExactEntry)
{
    // As stored: "rock" keeps "Hard rock" but not "Rock", and no entry equals it.
    state->filters.category = u"rock"_s;
    state->filters.type = u"MP3"_s;
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(shown(), u"Classic Hits"_s);
    EXPECT_EQ(child<QComboBox>("cmbCategory")->currentIndex(), 0);
    EXPECT_EQ(child<QComboBox>("cmbType")->currentIndex(), 1);
    state->filters.category.clear();
    state->filters.genre = u"Funk"_s;
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(child<QComboBox>("cmbGenre")->currentIndex(), 7) << "the first of the two";
    EXPECT_EQ(shown(), QString());
}

TEST_F(StationsTest, SearchStepsThroughNameAndCategoryMatchesAndWrapsRound)
{
    ASSERT_NO_FATAL_FAILURE(open());
    auto *text = child<QLineEdit>("txtSearch");
    const auto search = [&](const char *what, int fromRow, int row, int col) {
        SCOPED_TRACE(what);
        text->setText(QLatin1StringView(what));
        if (fromRow >= 0)
            grid->GotoCell(fromRow, 3);
        QTest::keyClick(text, Qt::Key_Return);
        EXPECT_EQ(grid->Row(), row);
        EXPECT_EQ(grid->Col(), col);
    };
    // Station names and categories, from the current row on, round to the top.
    for (const auto &[row, col] : {std::pair{0, 1}, {1, 5}, {4, 1}, {0, 1}, {1, 5}})
        search("rock", -1, row, col);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    // Text only in the row above the current one: found on the wrap-round pass.
    search("Rock One", 1, 0, 1);
    // With row 0 current, row 0 is never looked at again.
    search("Rock One", 0, 0, 3);
    // No text, no search.
    search("", 2, 2, 3);
}

TEST_F(StationsTest, CellEditorsWriteBackAndMarkTheCellChanged)
{
    ASSERT_NO_FATAL_FAILURE(open());
    auto *cboRating = child<QComboBox>("cboRating");
    ASSERT_TRUE(grid->EditCell(1, pos(Col::ColRating))); // rating 0
    EXPECT_TRUE(cboRating->isVisible());
    EXPECT_EQ(cboRating->currentIndex(), -1);
    cboRating->setCurrentIndex(4);
    QTest::keyClick(cboRating, Qt::Key_Return);
    EXPECT_FALSE(grid->isEditing());
    EXPECT_EQ(grid->CellText(1, pos(Col::ColRating)), u"5"_s);
    EXPECT_EQ(state->catalogue.at(2).Rating, 5);
    EXPECT_TRUE(grid->CellChanged(1, pos(Col::ColRating)));
    ASSERT_TRUE(grid->EditCell(0, pos(Col::ColRating))); // rating 3
    EXPECT_EQ(cboRating->currentText(), u"3"_s);
    QTest::keyClick(cboRating, Qt::Key_Escape);
    EXPECT_EQ(state->catalogue.at(1).Rating, 3);
    // Leaving the drop-down without a choice (the focus moving away ends the
    // edit as an update) keeps a rating it cannot show, and an unset one.
    for (const auto &[rating, text] : {std::pair{7, "7"}, {0, "0"}}) {
        state->catalogue.at(4).Rating = rating;
        grid->setCellText(3, pos(Col::ColRating), QLatin1StringView(text));
        ASSERT_TRUE(grid->EditCell(3, pos(Col::ColRating)));
        EXPECT_EQ(cboRating->currentIndex(), -1);
        EXPECT_FALSE(grid->commitEdit());
        EXPECT_EQ(grid->CellText(3, pos(Col::ColRating)), QLatin1StringView(text));
        EXPECT_EQ(state->catalogue.at(4).Rating, rating);
        EXPECT_FALSE(grid->CellChanged(3, pos(Col::ColRating)));
    }
    grid->GotoCell(2, pos(Col::ColSingle));
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_Space);
    EXPECT_TRUE(grid->CellChanged(2, pos(Col::ColSingle)));
    EXPECT_TRUE(state->catalogue.at(3).SingleSong);
    // The play handle only cancels the edit while there is no player.
    EXPECT_FALSE(grid->EditCell(0, pos(Col::ColPlay)));
    EXPECT_FALSE(grid->isEditing());
}

TEST_F(StationsTest, EditingThenClosingWritesTheCatalogue)
{
    ASSERT_NO_FATAL_FAILURE(open());
    filter("Jazz", "", "OGG", "");
    ASSERT_EQ(shown(), u"Jazz Cafe"_s);
    editText(0, Col::ColStation, u"Jazz Corner"_s);
    // A cell changed without a finished edit still reaches the file through the unload sweep,
    // and a rating that is no number is stored as 0.
    grid->setCellText(0, pos(Col::ColRating), u"x4"_s);
    grid->setCellChanged(0, pos(Col::ColRating), true);
    grid->setCellText(0, pos(Col::ColSign), u"A|B"_s);
    grid->setCellChanged(0, pos(Col::ColSign), true);
    window->close();
    EXPECT_TRUE(windows.ended);
    EXPECT_FALSE(state->catalogue.dirty) << "saved by the closing step";
    const QString file = catalogueText();
    EXPECT_TRUE(file.contains(u"Jazz Corner|Jazz|128|ogg|Lounge"_s));
    EXPECT_TRUE(file.contains(u"|False|0||A|B|"_s)) << "the typed separator goes into the file as it stands";
}

TEST_F(StationsTest, ClosingWritesOnlyWhenSomethingChangedEvenBeforeARefill)
{
    const QByteArray before = TempProfile::readFile(cataloguePath());
    ASSERT_NO_FATAL_FAILURE(open());
    filter("Talk", "", "", "");
    window->close();
    EXPECT_EQ(TempProfile::readFile(cataloguePath()), before);
    EXPECT_FALSE(QFile::exists(cataloguePath() + u".bck"_s));
    writeCatalogue(catalogue5);
    ASSERT_NO_FATAL_FAILURE(open());
    editText(2, Col::ColStation, u"Jazz Corner"_s);
    filter("Talk", "", "", "");
    EXPECT_FALSE(state->catalogue.dirty) << "a refill marks nothing itself; the edit counts at closing";
    window->close();
    EXPECT_TRUE(catalogueText().contains(u"\nJazz Corner|Jazz|"_s));
}

TEST_F(StationsTest, ARefillPutsEachFieldUnderItsHeadingAfterAColumnMove)
{
    ASSERT_NO_FATAL_FAILURE(open());
    grid->setColPosition(Col::ColGenre, 9);
    grid->setColPosition(Col::ColStation, 0);
    filter("", "", "", "");
    ASSERT_EQ(grid->ColHeading(pos(Col::ColGenre)), u"Genre"_s);
    ASSERT_EQ(grid->ColHeading(pos(Col::ColStation)), u"Station"_s);
    EXPECT_EQ(shown(), allFive);
    EXPECT_EQ(shown(Col::ColGenre), u"Rock,Classic rock,Jazz,Talk,Country"_s);
    // Editing a moved column writes back the right field.
    editText(4, Col::ColGenre, u"Rockabilly"_s);
    EXPECT_EQ(state->catalogue.at(5).Genre, u"Rockabilly"_s);
    EXPECT_EQ(state->catalogue.at(5).Name, u"Rockabilly"_s);
    EXPECT_EQ(state->catalogue.at(5).Category, u"Oldies"_s);
}

TEST_F(StationsTest, ThePlayBarAndThePlayCellDriveTheHiddenPlayerOfTheCurrentRow)
{
    IcyServer server;
    server.pages["/list.pls"] =
        IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=http://one.test/s\r\n"
                        "Title1=(#1 - 1/100) One\r\nLength1=-1\r\nVersion=2\r\n");
    ASSERT_TRUE(server.start());
    writeCatalogue(u"Direct FM|Rock|128|mp3||o|True|3|||http://127.0.0.1:9/direct|i\r\n"
                   "No Address|Rock|128|mp3||o|True|3|||||i\r\n"
                   "Listed FM|Pop|128|mp3||o|True|3|||%1|i\r\n"_s.arg(server.url(u"/list.pls"_s)));
    ASSERT_NO_FATAL_FAILURE(open());
    ScriptedPlayer *wmp1 = players.first();
    auto *bar = child<ucPlayBar>("ucPlayBar1");
    const auto button = [&](const char *name) {
        return bar->findChild<ucPictureButton *>(QLatin1StringView(name));
    };
    const auto playingLook = [&] { return button("cmdDSPause")->x() == ucPlayBar::ShownLeft; };
    EXPECT_FALSE(child<PlayerView>("wmp1")->isVisible()) << "wmp1 is kept out of sight";
    grid->setRow(0);
    button("cmdDSPlay")->click();
    EXPECT_EQ(wmp1->URL(), u"http://127.0.0.1:9/direct"_s);
    wmp1->enter(MediaPlayer::Playing);
    EXPECT_EQ(bar->Caption(), u"Playing: Direct FM"_s);
    bar->findChild<ucSlider *>(u"ucSlider1"_s)->setValue(40);
    button("cmdDSMute")->click();
    EXPECT_EQ(wmp1->volume(), 40);
    EXPECT_TRUE(wmp1->mute());
    wmp1->enter(MediaPlayer::Stopped);
    EXPECT_FALSE(playingLook()) << "stopped by the player";
    grid->setRow(2);
    button("cmdDSPlay")->click();
    EXPECT_TRUE(waitUntil([&] { return wmp1->URL() == u"http://one.test/s"; }, 5000));
    EXPECT_EQ(bar->toolTip(), u"Stream: http://one.test/s"_s);
    // The play cell is no edit; it leaves the playing look even when nothing could start.
    grid->setRow(1);
    EXPECT_FALSE(grid->EditCell(1, pos(Col::ColPlay)));
    EXPECT_EQ(bar->Caption(), u"Not StreamUrl Defined for: & No Address"_s);
    EXPECT_TRUE(playingLook());
    // A filter that keeps no station leaves no current row: nothing starts.
    filter("", "", "TV", "");
    ASSERT_EQ(grid->Row(), -1);
    wmp1->log.clear();
    button("cmdDSPlay")->click();
    EXPECT_FALSE(playingLook());
    EXPECT_TRUE(wmp1->log.isEmpty());
}

TEST_F(StationsTest, AStationPlayingInAListeningWindowGetsTodaysDate)
{
    ASSERT_NO_FATAL_FAILURE(open());
    state->catalogue.dirty = false;
    window->stationPlayed(2, 2, u"2030-01-01"_s);
    window->stationPlayed(ListenSession::PlayedKind, 99, u"2030-01-01"_s);
    EXPECT_FALSE(state->catalogue.dirty) << "other kinds and rows change nothing";
    FrmListen *listen = window->createListenWindow();
    listen->ListenRow = 2;
    listen->ListenUrl = u"http://127.0.0.1:9/direct"_s;
    listen->Play();
    players.last()->enter(MediaPlayer::Playing);
    const QString today = QDate::currentDate().toString(Qt::ISODate);
    EXPECT_EQ(state->catalogue.at(3).LastDate, today);
    EXPECT_EQ(grid->CellText(2, pos(Col::ColLastDate)), today);
    EXPECT_TRUE(state->catalogue.dirty);
    listen->close();
}

TEST_F(StationsTest, TheHistoryOpensFromItsButtonAndCtrlH)
{
    QList<QWidget *> owners;
    openHistory = [&owners](QWidget *owner) { owners << owner; };
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdHistory");
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_H, Qt::ControlModifier);
    EXPECT_EQ(owners, (QList<QWidget *>{window.get(), window.get()}));
}

TEST_F(StationsTest, LoadStartsAHiddenWarmUpWindowOnTheInstalledVideo)
{
    ASSERT_NO_FATAL_FAILURE(open());
    ASSERT_EQ(players.size(), 2) << "the window's own player and the warm-up's";
    auto *warmUp = child<FrmListen>("FrmListen");
    ASSERT_EQ(warmUp->ListenRow, ListenSession::WarmUpRow);
    EXPECT_FALSE(warmUp->isVisible());
    EXPECT_EQ(warmUp->x(), FrmListen::WarmUpLeft);
    EXPECT_EQ(players[1]->log, QStringList({u"URL="_s + profile.installFolder() + u"/miniTC.avi"_s,
                                            u"playCount=1000000000"_s, u"pause"_s}));
}

// Every control a user can reach lies inside the window, and no two overlap.
void expectReachable(QWidget *window)
{
    QList<std::pair<QRect, QWidget *>> seen;
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisibleTo(window) ||
            widget->objectName().startsWith(u"qt_") || widget->isWindow())
            continue;
        const QRect at(widget->mapTo(window, QPoint(0, 0)), widget->size());
        EXPECT_TRUE(window->rect().contains(at)) << widget->objectName().toStdString() << " at " << at.x()
                                                 << "," << at.y() << " " << at.width() << "x" << at.height();
        for (const auto &[other, otherWidget] : seen) {
            if (!otherWidget->isAncestorOf(widget) && !widget->isAncestorOf(otherWidget)) {
                EXPECT_FALSE(other.intersects(at)) << widget->objectName().toStdString() << " over "
                                                   << otherWidget->objectName().toStdString();
            }
        }
        seen.append({at, widget});
    }
}

TEST_F(StationsTest, TheStationColumnTakesTheSpareWidthAndShowsWholeNames)
{
    writeCatalogue(catalogue5 +
                   u"SomaFM Groove Salad: a nicely chilled plate of ambient beats|Ambient|128|mp3||"
                   "o|False|3|||http://127.0.0.1:8000/g|i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    window->resize(1600, 700);
    QCoreApplication::processEvents();
    int total = 0;
    for (int col = 0; col < grid->Cols(); ++col)
        total += grid->ColWidth(col);
    EXPECT_EQ(total, grid->viewport()->width()) << "no room left over";
    EXPECT_EQ(grid->ColWidth(pos(Col::ColOutput)), 200);
    // Narrow, the names still show whole as far as they reasonably can.
    window->resize(700, 500);
    QCoreApplication::processEvents();
    EXPECT_GE(grid->ColWidth(pos(Col::ColStation)),
              qMin(300, grid->fontMetrics().horizontalAdvance(u"SomaFM Groove Salad: a nicely"_s)));
}

TEST_F(StationsTest, TheWindowAndItsColumnsComeBackAsTheyWereLeft)
{
    ASSERT_NO_FATAL_FAILURE(open());
    window->setGeometry(40, 30, 720, 520);
    grid->setColPosition(Col::ColGenre, 9);
    grid->setColWidth(pos(Col::ColCategory), 150);
    grid->Sort(pos(Col::ColStation), GridSortOrder::Descending);
    window->close();
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(window->geometry(), QRect(40, 30, 720, 520));
    EXPECT_EQ(pos(Col::ColGenre), 9);
    EXPECT_EQ(grid->ColWidth(pos(Col::ColCategory)), 150);
    EXPECT_EQ(grid->sortColumn(), pos(Col::ColStation));
    EXPECT_EQ(shown(), u"Talk Radio,Rockabilly,Rock One,Jazz Cafe,Classic Hits"_s);
    EXPECT_EQ(shown(Col::ColGenre), u"Talk,Country,Rock,Jazz,Classic rock"_s)
        << "each field under its heading";

    // Settings from a larger screen, or damaged: fitted onto this screen, or left aside.
    const QRect screen = window->screen()->availableGeometry();
    const std::pair<QString, QString> damaged[] = {
        {u"-4000,-3000,99999,99999"_s, u"23 100 46;0 1 2;-1"_s},
        {u"nonsense"_s, u"23 100 46 33 33 100 66 200 46 66 46 166 200;0 0 1 2 3 4 5 6 7 8 9 10 11;-1"_s},
        {u"10,10,0,-5"_s, u"x;y;z"_s},
    };
    for (const auto &[geometry, columns] : damaged) {
        SCOPED_TRACE(geometry.toStdString());
        window.reset();
        SettingsStore::saveSetting(SettingsStore::MainWindow, geometry);
        SettingsStore::saveSetting(SettingsStore::MainColumns, columns);
        ASSERT_NO_FATAL_FAILURE(open());
        EXPECT_TRUE(screen.contains(window->frameGeometry()));
        EXPECT_EQ(pos(Col::ColGenre), 2);
        EXPECT_EQ(grid->ColWidth(pos(Col::ColCategory)), 100);
        EXPECT_EQ(grid->sortColumn(), -1);
    }
}

TEST_F(StationsTest, WorksDownTo640PixelsWide)
{
    ASSERT_NO_FATAL_FAILURE(open());
    window->resize(640, 560);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->width(), 640) << "narrow enough for half a laptop screen";
    expectReachable(window.get());
    const QWidget *strip = child("GFXOption");
    EXPECT_LE(strip->geometry().bottom(), grid->geometry().top())
        << "the wrapped commands push the grid down";
    EXPECT_GE(grid->height(), 100);
}

// Run at scale 2 too, on a 1600 x 1000 screen (see CMakeLists.txt).
TEST_F(StationsTest, FitsTheWholeScreenWithEveryControlReachable)
{
    ASSERT_NO_FATAL_FAILURE(open());
    const QRect screen = window->screen()->availableGeometry();
    window->setGeometry(screen);
    QCoreApplication::processEvents();
    EXPECT_TRUE(screen.contains(window->geometry()));
    expectReachable(window.get());
    expectAccessibleNames(window.get());
}

} // namespace
