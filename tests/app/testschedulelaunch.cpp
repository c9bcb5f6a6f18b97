// The Schedule button from end to end: the task it leaves in the unit folder,
// and its command line run the way the service would run it, with no display,
// recording from a loopback station until its limit.
#include "base/launchoptions.h"
#include "ui/schedule/schedulingsetup.h"
#include "support/fakepowercontrol.h"
#include "ui/recorder/frmtc.h"
#include "support/recordingsystemctl.h"
#include "schedule/schedule.h"
#include "schedule/task.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "schedule/unitfile.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

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

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ScheduleLaunch, TheScheduledCommandLineRecordsHeadlessAndEndsAtItsLimit)
{
    TempProfile profile;
    IcyServer server;
    server.songs = {{"Artist - Endless", 400}};
    ASSERT_TRUE(server.start());
    // A copy in the profile's installation folder, so no installed file of the build tree is taken over.
    const QString program = profile.installFolder() + u"/tunecatch"_s;
    ASSERT_TRUE(QFile::copy(qEnvironmentVariable("TUNECATCH_BIN_DIR") + u"/tunecatch"_s, program));
    ScriptedPrompt prompt;
    prompt.answers = {true};
    LaunchOptions launch;
    FakePowerControl power;
    auto systemctl = std::make_shared<RecordingSystemctl>();
    FrmTC::Hooks hooks;
    hooks.now = [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 15, 30)); };
    SchedulingSetup scheduling;
    scheduling.systemctl = systemctl;
    scheduling.programPath = program;
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
    EXPECT_EQ(task->CommandLine(), line);
    EXPECT_EQ(task->WorkingDirectory(), profile.installFolder() + u'/');
    EXPECT_EQ(task->Triggers()->item(1)->Text(), u"At 21:15 on 2031-01-31"_s);
    EXPECT_TRUE(systemctl->calls.contains(u"restart Loop\\x20FM_2031\\x2d01\\x2d31_20\\x2d15.timer"_s));
    // What systemd starts: the service's ExecStart=, in the service's folder.
    const QString unit = QString::fromUtf8(TempProfile::readFile(task->filename()));
    const QRegularExpressionMatch exec = QRegularExpression(u"\nExecStart=(.*)\n"_s).match(unit);
    ASSERT_TRUE(exec.hasMatch()) << unit.toStdString();
    EXPECT_TRUE(exec.captured(1).contains(u"%%STATION%%_%%DATE%%_%%TIME%%"_s));
    const std::optional<QStringList> words = UnitText::splitExecLine(exec.captured(1));
    ASSERT_TRUE(words);
    EXPECT_EQ(words->first(), program);
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

} // namespace
