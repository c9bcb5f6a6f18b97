// The program as a user meets it: the real windows behind start-up, and the
// real executable recording from a loopback station the way a terminal or
// a scheduled start runs it.
#include "app/programparts.h"
#include "base/appinfo.h"
#include "app/qtappwindows.h"
#include "base/settingsstore.h"
#include "app/startup.h"
#include "controls/lynxgrid.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

class LaunchTest : public ProfileTest
{
public:
    // Starts a copy of the program in the profile's installation folder, so
    // that taking over an installed catalogue never touches the build tree.
    void launch(const QString &arguments)
    {
        const QString copy = profile.installFolder() + u"/tunecatch"_s;
        ASSERT_TRUE(QFile::copy(qEnvironmentVariable("TUNECATCH_BIN_DIR") + u"/tunecatch"_s, copy));
        // The profile's folders and the offscreen display reach it through the inherited environment.
        program.start(copy, QProcess::splitCommand(arguments));
        ASSERT_TRUE(program.waitForStarted(10000));
    }
    // Waits for the program to end while this test's own loop keeps serving it.
    bool exited(int milliseconds)
    {
        return waitUntil([this] { return program.state() == QProcess::NotRunning; }, milliseconds);
    }
    IcyServer server;
    QProcess program;
};

// The program in this process, with its real windows, started without arguments.
struct OrdinaryStart
{
    explicit OrdinaryStart(const TempProfile &profile)
        : state(profile.installFolder(), prompt), windows(state), startup(state, windows)
    {
        TempProfile::writeFile(profile.installFolder() + u"/Stations.txt"_s,
                               IcyServer::dataFile(u"Stations.txt"_s));
        windows.setStartup(&startup);
        shown = startup.SubMain({});
        for (QWidget *w : QApplication::topLevelWidgets()) {
            if (w->isVisible() && qobject_cast<FrmStations *>(w))
                main = qobject_cast<FrmStations *>(w);
        }
        if (main)
            grid = main->findChild<LynxGrid *>(u"LynxGrid1"_s);
    }
    // As in the program: the end comes inside the running loop, and the
    // closing procedure ends that loop.
    int runUntil(const std::function<void()> &end)
    {
        QTimer::singleShot(0, main, end);
        return QApplication::exec();
    }
    ScriptedPrompt prompt;
    ProgramParts state;
    QtAppWindows windows;
    Startup startup;
    bool shown = false;
    FrmStations *main = nullptr;
    LynxGrid *grid = nullptr;
};

TEST_F(LaunchTest, AnOrdinaryStartShowsTheStationsAndBeingToldToEndSavesEditsAndFilters)
{
    OrdinaryStart start(profile);
    ASSERT_TRUE(start.shown);
    ASSERT_NE(start.grid, nullptr);
    ASSERT_GE(start.state.catalogue.stationCount(), 25);
    EXPECT_EQ(start.grid->ItemCount(), start.state.catalogue.stationCount());
    start.main->findChild<QComboBox *>(u"cmbGenre"_s)->setCurrentText(u"Jazz"_s);
    QTest::mouseClick(start.main->findChild<QPushButton *>(u"cmdFilter"_s), Qt::LeftButton);
    EXPECT_LT(start.grid->ItemCount(), start.state.catalogue.stationCount());
    const QString renamed = start.grid->CellText(0, 1) + u" renamed"_s;
    start.grid->setCellText(0, 1, renamed);
    start.grid->setCellChanged(0, 1, true);
    EXPECT_EQ(start.runUntil([&start] { start.startup.Terminate(); }), 0);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::OptGenre), u"Jazz"_s);
    Catalogue saved;
    saved.load(start.prompt, AppInfo::title);
    EXPECT_EQ(saved.stationCount(), start.state.catalogue.stationCount());
    bool found = false;
    for (int i = 1; i <= saved.stationCount(); ++i)
        found |= saved.at(i).Name == renamed;
    EXPECT_TRUE(found);
    EXPECT_TRUE(start.prompt.shown.isEmpty());
}

TEST_F(LaunchTest, ARecordingWhoseStationRefusesEndsTheProgram)
{
    ASSERT_NO_FATAL_FAILURE(
        launch(u"-a 127.0.0.1:%1/live -w Loop -s ./%STATION%.mp3 -b 1"_s.arg(IcyServer::refusedPort())));
    ASSERT_TRUE(exited(20000)) << "an unattended recording must not run on for ever";
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
}

#ifdef Q_OS_UNIX
TEST_F(LaunchTest, TerminatingARecordingWritesWhatWasStillCached)
{
    server.songs = {{"Artist - Endless", 1000}};
    server.bytesPerSecond = 64000;
    ASSERT_TRUE(server.start());
    ASSERT_NO_FATAL_FAILURE(launch(u"-a %1 -w Loop -s ./%STATION%.mp3"_s.arg(server.url())));
    // Below the 64000-byte cache: only the interval before the first title is on disk.
    QTRY_VERIFY_WITH_TIMEOUT(server.clientCount() == 1 && server.sent(0).audio.size() >= 48000, 20000);
    const QString file = profile.dataFolder() + u"Rec/Loop.mp3"_s;
    const qint64 before = QFileInfo(file).size();
    EXPECT_LE(before, 8000);
    program.terminate();
    ASSERT_TRUE(exited(20000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    const QByteArray bytes = TempProfile::readFile(file);
    // The interval before the first title opens the file twice over, as at
    // every title change; from there on the audio runs on unbroken.
    ASSERT_GE(bytes.size(), before + 32000);
    const QByteArray &audio = server.sent(0).audio;
    EXPECT_EQ(bytes.left(8000), audio.left(8000));
    EXPECT_EQ(bytes.mid(8000, 32000), audio.left(32000));
}
#endif

} // namespace
