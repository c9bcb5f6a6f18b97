// The program as a user meets it: the real windows behind start-up, and the
// real executable recording from a loopback station the way a terminal or
// a scheduled start runs it. The Schedule button is followed from end to end:
// the task it leaves in the unit folder, and its command line run the way the
// service would run it, with no display, until its limit.
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "app/startup.h"
#include "app/terminationwatcher.h"
#include "base/appinfo.h"
#include "base/launchoptions.h"
#include "base/settingsstore.h"
#include "controls/lynxgrid.h"
#include "recorder/streamconnection.h"
#include "schedule/schedule.h"
#include "schedule/task.h"
#include "schedule/unitfile.h"
#include "support/eventwait.h"
#include "support/fakepowercontrol.h"
#include "support/icyserver.h"
#include "support/recordingsystemctl.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/recorder/frmtc.h"
#include "ui/schedule/schedulingsetup.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

class LaunchTest : public ProfileTest
{
public:
    // Starts a copy of the program in the profile's installation folder, so
    // that taking over an installed catalogue never touches the build tree.
    QString copyProgram() const
    {
        const QString copy = profile.installFolder() + u"/tunecatch"_s;
        EXPECT_TRUE(QFile::copy(qEnvironmentVariable("TUNECATCH_BIN_DIR") + u"/tunecatch"_s, copy));
        return copy;
    }
    void launch(const QString &arguments)
    {
        // The profile's folders and the offscreen display reach it through the inherited environment.
        program.start(copyProgram(), QProcess::splitCommand(arguments));
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
    start.main->findChild<QComboBox *>(u"cmbGenre"_s)->setCurrentText(u"Jazz"_s);
    QTest::mouseClick(start.main->findChild<QPushButton *>(u"cmdFilter"_s), Qt::LeftButton);
    const QString renamed = start.grid->CellText(0, 1) + u" renamed"_s;
    start.grid->setCellText(0, 1, renamed);
    start.grid->setCellChanged(0, 1, true);
    EXPECT_EQ(start.runUntil([&start] { start.startup.terminate(); }), 0);
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

#ifdef Q_OS_UNIX
// A dialog runs on the stack as a child of the station window: the signal
// closes it before the window goes.
TEST_F(LaunchTest, ASignalWhileADialogIsOpenClosesItFirstThenEndsTheProgram)
{
    for (const char *button : {"cmdAbout", "cmdSettings"}) {
        SCOPED_TRACE(button);
        OrdinaryStart start(profile);
        ASSERT_TRUE(start.shown);
        TerminationWatcher watcher([&start] { start.startup.terminate(); });
        QString shown;
        const int status = start.runUntil([&] {
            QTimer::singleShot(0, [&] {
                if (QWidget *modal = QApplication::activeModalWidget())
                    shown = QString::fromLatin1(modal->metaObject()->className());
                ::raise(SIGTERM);
            });
            QTest::mouseClick(start.main->findChild<QWidget *>(QLatin1StringView(button)), Qt::LeftButton);
        });
        EXPECT_EQ(status, 0);
        EXPECT_FALSE(shown.isEmpty()) << "the dialog was not open when the signal came";
        EXPECT_TRUE(std::ranges::none_of(QApplication::topLevelWidgets(), &QWidget::isVisible));
    }
}
#endif

// What the program prints and how it ends, as a terminal or a scheduler sees it.
TEST_F(LaunchTest, TheCommandLineAnswersOnItsStreamsAndItsExitStatusSaysHowTheRecordingEnded)
{
    server.songs = {{"Artist - Song", 100}};
    ASSERT_TRUE(server.start());
    const QString refused = u"-a 127.0.0.1:%1/live"_s.arg(IcyServer::refusedPort());
    const QString loop = u"-a "_s + server.url();
    const QString rest = u" -w Loop -s ./%STATION%.mp3 -b 1"_s;
    const struct
    {
        QString arguments;
        int status;
        QString out, errors; // what standard output holds, and what standard error contains
    } rows[] = {
        {u"--help"_s, 0, {}, {}},
        {u"-a x --version"_s, 0, AppInfo::title + u' ' + AppInfo::version() + u'\n', {}},
        {rest, 2, {}, u"No stream address given (-a)."_s},
        {refused + rest, 3, {}, StreamConnection::TextNoConnection},
        {loop + u" -w Loop -s /proc/none/%STATION%.mp3 -b 1"_s, 4, {}, u"Unable to open"_s},
        {loop + u" -w Full -s ./%STATION%.mp3 -b 1"_s, 4, {}, u"Full.mp3\": The disk is full"_s},
    };
    // A disk that fills up: the file a launched recording replaces leads to /dev/full.
    const QString recordings = profile.dataFolder() + u"Rec/"_s;
    ASSERT_TRUE(QDir().mkpath(recordings) && QFile::link(u"/dev/full"_s, recordings + u"Full.mp3"_s));
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments.toStdString());
        ASSERT_NO_FATAL_FAILURE(launch(row.arguments));
        ASSERT_TRUE(exited(20000)) << "an unattended recording must not run on for ever";
        const QString out = QString::fromLocal8Bit(program.readAllStandardOutput());
        const QString errors = QString::fromLocal8Bit(program.readAllStandardError());
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), row.status) << errors.toStdString();
        if (row.arguments == u"--help"_s) {
            for (const char *part : {"-a ADDRESS", "-n ", "--version", "Exit status", "  5  "})
                EXPECT_TRUE(out.contains(QLatin1StringView(part))) << part;
        } else {
            EXPECT_EQ(out, row.out);
        }
        EXPECT_TRUE(errors.contains(row.errors)) << errors.toStdString();
        QFile::remove(profile.installFolder() + u"/tunecatch"_s);
    }
}

// Limits by the clock and at the byte, and recordings of one station at the
// same time, each in its own file.
TEST_F(LaunchTest, LaunchedRecordingsEndAtTheirLimitsAndNeverShareAFile)
{
    server.songs = {{"Artist - Endless", 1000}};
    server.repeat = true;
    server.keepSent = false;
    ASSERT_TRUE(server.start());
    const QString recordings = profile.dataFolder() + u"Rec/"_s;
    const qint64 limitBytes = qint64(0.05 * 1024 * 1024);
    const struct
    {
        qint64 bytesPerSecond;
        bool bitrate, flood;
        QString limit;
        int programs;
    } rows[] = {{10, true, false, u"-t 0.02"_s, 1},
                {16000, false, false, u"-t 0.02"_s, 1},
                {0, true, true, u"-b 0.05"_s, 1},
                // Paced to last about 6 s, so the three surely overlap: one
                // that ended before another began may take its name again.
                {8000, true, false, u"-b 0.05"_s, 3}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.limit.toStdString() + ' ' + std::to_string(row.bytesPerSecond));
        QDir(recordings).removeRecursively();
        server.bytesPerSecond = row.bytesPerSecond;
        server.announceBitrate = row.bitrate;
        server.flood = row.flood;
        const QString copy = copyProgram();
        std::vector<std::unique_ptr<QProcess>> runs;
        for (int i = 0; i < row.programs; ++i) {
            runs.push_back(std::make_unique<QProcess>());
            const QString arguments = u"-a %1 -w Loop -s ./%STATION%.mp3 "_s.arg(server.url()) + row.limit;
            runs.back()->start(copy, QProcess::splitCommand(arguments));
        }
        for (const auto &run : runs) {
            ASSERT_TRUE(waitUntil([&run] { return run->state() == QProcess::NotRunning; }, 20000))
                << "a limit must end an unattended recording";
            EXPECT_EQ(run->exitStatus(), QProcess::NormalExit);
            EXPECT_EQ(run->exitCode(), 0) << run->readAllStandardError().toStdString();
        }
        const QStringList names = QDir(recordings).entryList({u"*.mp3"_s}, QDir::Files, QDir::Name);
        EXPECT_EQ(names.size(), row.programs) << names.join(u", "_s).toStdString();
        if (row.limit.startsWith(u"-b")) {
            for (const QString &name : names) {
                const qint64 size = QFileInfo(recordings + name).size();
                EXPECT_GE(size, limitBytes) << name.toStdString();
                EXPECT_LE(size, limitBytes + 3 * server.metaInt) << name.toStdString();
            }
        }
        QFile::remove(copy);
    }
}

TEST_F(LaunchTest, TheScheduledCommandLineRecordsHeadlessAndEndsAtItsLimit)
{
    server.songs = {{"Artist - Endless", 400}};
    ASSERT_TRUE(server.start());
    const QString copy = copyProgram();
    ScriptedPrompt prompt;
    prompt.answers = {true};
    LaunchOptions launch;
    FakePowerControl power;
    auto systemctl = std::make_shared<RecordingSystemctl>();
    FrmTC::Hooks hooks;
    hooks.now = [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 15, 30)); };
    SchedulingSetup scheduling;
    scheduling.systemctl = systemctl;
    scheduling.programPath = copy;
    QString dialogStop;
    scheduling.answerDialog = [&dialogStop](TaskDialog &dialog) {
        dialogStop = dialog.findChild<QComboBox *>(u"cboStop"_s)->currentText() + u' ' +
                     dialog.findChild<QLineEdit *>(u"txtStop"_s)->text();
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
    };
    hooks.schedule = [&](const RecordingInputs &inputs, const std::function<QDateTime()> &now, QWidget *owner) {
        scheduleRecording(inputs, now, prompt, scheduling, owner);
    };
    auto *window = new FrmTC(prompt, launch, power, nullptr, hooks);
    window->findChild<QLineEdit *>(u"txtStream"_s)->setText(server.url());
    window->findChild<QLabel *>(u"LblStation"_s)->setText(u"Loop FM"_s);
    window->findChild<QRadioButton *>(u"optBreak1"_s)->setChecked(true);
    window->findChild<QLineEdit *>(u"txtBreak1"_s)->setText(u"1"_s);
    QTest::mouseClick(window->findChild<QPushButton *>(u"cmdSchedule"_s), Qt::LeftButton);
    EXPECT_EQ(dialogStop, u"After megabytes 1"_s);
    const QWidget *list = window->findChild<QWidget *>(u"FrmScheduledTasks"_s);
    ASSERT_NE(list, nullptr) << "Yes to the question opens the scheduled recordings";
    EXPECT_TRUE(list->isVisible());
    delete window;
    SystemdTaskService service(SystemdTaskService::userUnitFolder(), *systemctl);
    Schedule schedule(service);
    schedule.Refresh();
    ASSERT_EQ(schedule.Count(), 1);
    const std::shared_ptr<Task> task = schedule.Job(1);
    const QString line = u"-s .\\%STATION%_%DATE%_%TIME%.mp3 -a "_s + server.url() + u" -w Loop FM -b 1 -v"_s;
    EXPECT_EQ(task->Name(), u"Loop FM_2031-01-31_20-15"_s);
    // What systemd starts: the service's ExecStart=, in the service's folder.
    const QString unit = QString::fromUtf8(TempProfile::readFile(task->filename()));
    const QRegularExpressionMatch exec = QRegularExpression(u"\nExecStart=(.*)\n"_s).match(unit);
    ASSERT_TRUE(exec.hasMatch()) << unit.toStdString();
    const std::optional<QStringList> words = UnitText::splitExecLine(exec.captured(1));
    ASSERT_TRUE(words);
    EXPECT_EQ(words->first(), copy);
    EXPECT_EQ(words->mid(1), line.split(u' '));
    QProcess run;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        env.remove(QString::fromLatin1(name));
    run.setProcessEnvironment(env);
    run.setWorkingDirectory(task->WorkingDirectory());
    run.start(words->first(), words->mid(1));
    ASSERT_TRUE(run.waitForStarted(10000));
    ASSERT_TRUE(waitUntil([&run] { return run.state() == QProcess::NotRunning; }, 60000))
        << run.readAllStandardError().toStdString();
    EXPECT_EQ(run.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(run.exitCode(), 0) << run.readAllStandardError().toStdString();
    const QDir rec(profile.dataFolder() + u"Rec"_s);
    const QStringList files = rec.entryList({u"Loop FM_*.mp3"_s}, QDir::Files);
    ASSERT_EQ(files.size(), 1) << rec.entryList().join(u',').toStdString();
    const QByteArray bytes = TempProfile::readFile(rec.filePath(files.first()));
    EXPECT_GE(bytes.size(), 1024 * 1024);
    EXPECT_LT(bytes.size(), 2 * 1024 * 1024);
    EXPECT_GE(server.sent(0).audio.indexOf(bytes.right(64000)), 0) << "not a run of the station's audio";
}

#ifdef Q_OS_UNIX
TEST_F(LaunchTest, TerminatingARecordingWritesWhatWasStillCached)
{
    server.songs = {{"Artist - Endless", 1000}};
    server.bytesPerSecond = 64000;
    ASSERT_TRUE(server.start());
    // Without tags, as the settings say, the file is the station's bytes.
    SettingsStore::saveBoolean(SettingsStore::WriteTags, false);
    ASSERT_NO_FATAL_FAILURE(launch(u"-a %1 -w Loop -s ./%STATION%.mp3"_s.arg(server.url())));
    // Below the 64000-byte cache: only the interval before the first title is on disk.
    ASSERT_TRUE(waitUntil([this] { return server.clientCount() == 1 && server.sent(0).audio.size() >= 48000; },
                          20000));
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
