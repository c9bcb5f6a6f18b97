// The systemd store in a temporary unit folder, with systemctl replaced by a
// recorder of its calls; the units it writes are checked by systemd's own tools.
#include "base/apperror.h"
#include "support/errornumber.h"
#include "support/recordingsystemctl.h"
#include "schedule/oncalendar.h"
#include "schedule/schedule.h"
#include "schedule/systemdtaskservice.h"
#include "schedule/task.h"
#include "schedule/taskerrors.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "schedule/unitfile.h"
#include "support/tempprofile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TriggerRecord trigger(qint32 type, int hour, int minute, qint16 word0 = 0, qint16 word1 = 0, qint16 word2 = 0)
{
    TriggerRecord record;
    record.setLongWord(TriggerRecord::TriggerType, type);
    using R = TriggerRecord;
    const std::pair<TriggerRecord::Field, int> words[] = {
        {R::BeginYear, 2031},     {R::BeginMonth, 1},    {R::BeginDay, 31},     {R::StartHour, hour},
        {R::StartMinute, minute}, {R::TypeWord0, word0}, {R::TypeWord1, word1}, {R::TypeWord2, word2}};
    for (const auto &[field, value] : words)
        record.setWord(field, qint16(value));
    return record;
}

// Everything a Task shows of itself.
TaskDefinition definitionOf(Task &task)
{
    int idle = 0, deadline = 0;
    task.GetIdleWait(idle, deadline);
    TaskDefinition d{task.ApplicationName(),
                     task.CommandLine(),
                     task.Comment(),
                     task.Creator(),
                     task.WorkingDirectory(),
                     task.GetAccountInfo(),
                     task.Flags(),
                     qint16(task.ErrorRetryCount()),
                     qint16(task.ErrorRetryInterval()),
                     qint16(idle),
                     qint16(deadline),
                     task.MaxRunTime(),
                     task.Priority(),
                     {}};
    for (const std::shared_ptr<Trigger> &t : task.Triggers()->NewEnum())
        d.triggers.append(t->record());
    return d;
}

QString escaped(const QString &name)
{
    QProcess escape;
    escape.start(u"systemd-escape"_s, {u"--"_s, name});
    escape.waitForFinished();
    return QString::fromUtf8(escape.readAllStandardOutput()).trimmed();
}

class SystemdStore : public ProfileTest
{
public:
    void SetUp() override
    {
        const QString folder = profile.root() + u"/my tools"_s;
        QDir().mkpath(folder);
        program = folder + u"/tune%catch"_s;
        ASSERT_TRUE(QFile::copy(QCoreApplication::applicationFilePath(), program));
    }
    // The task as the Schedule button leaves it, with a program that exists.
    TaskDefinition recording() const
    {
        return {.applicationName = QFileInfo(program).fileName(),
                .parameters =
                    u"-s .\\%STATION%_%DATE%_%TIME%.mp3 -a http://10.0.0.5:8000/live?a=$HOME -w Jazz 24 "
                    "-n -xs -t 60 -v"_s,
                .comment = u"Recording from Jazz 24"_s,
                .creator = u"Tunecatch"_s,
                .workingDirectory = QFileInfo(program).absolutePath() + u'/',
                .account = u"ann"_s,
                .flags = 9219,
                .triggers = {trigger(TriggerRecord::Once, 21, 15)}};
    }
    QString unitFolder() const { return SystemdTaskService::userUnitFolder(); }
    QString unitText(const QString &name, const QString &suffix) const
    {
        return QString::fromUtf8(TempProfile::readFile(unitFolder() + u'/' + escaped(name) + suffix));
    }
    // systemd's own check of the pair: not a word to say.
    void expectVerified(const QString &name) const
    {
        const QString base = unitFolder() + u'/' + escaped(name);
        QProcess verify;
        verify.setProcessChannelMode(QProcess::MergedChannels);
        verify.start(u"systemd-analyze"_s,
                     {u"verify"_s, u"--user"_s, base + u".timer"_s, base + u".service"_s});
        ASSERT_TRUE(verify.waitForFinished(30000));
        EXPECT_EQ(verify.exitCode(), 0);
        const QByteArray said = verify.readAll();
        EXPECT_TRUE(said.isEmpty()) << name.toStdString() << ": " << said.toStdString();
    }
    std::shared_ptr<Task> readBack(const QString &name)
    {
        fresh = std::make_unique<SystemdTaskService>(unitFolder(), systemctl);
        schedule = std::make_unique<Schedule>(*fresh);
        schedule->Refresh();
        for (const std::shared_ptr<Task> &task : schedule->NewEnum()) {
            if (task->Name() == name)
                return task;
        }
        return nullptr;
    }
    QString program;
    RecordingSystemctl systemctl;
    SystemdTaskService service{SystemdTaskService::userUnitFolder(), systemctl};
    std::unique_ptr<SystemdTaskService> fresh;
    std::unique_ptr<Schedule> schedule;
};

TEST_F(SystemdStore, EveryPropertyComesBackExactlyAfterAFreshRefresh)
{
    TaskDefinition odd = recording();
    odd.applicationName = program;
    odd.workingDirectory = u"/"_s;
    odd.parameters = u" -s  D:\\My Music\\ -w \"Jazz\" 'n' ; Één 100% $$x -v "_s;
    odd.comment = u"  100% radio  "_s;
    odd.creator = u"Ann's 100% tool"_s;
    odd.account = u"ann smith"_s;
    odd.flags = TaskFlags::DeleteWhenDone | TaskFlags::Disabled;
    odd.errorRetryCount = -3;
    odd.errorRetryInterval = 32767;
    odd.idleMinutes = 10;
    odd.deadlineMinutes = -32768;
    odd.maxRunTime = -1;
    odd.priority = TaskPriority::High;
    odd.triggers = {trigger(TriggerRecord::Daily, 6, 5, 1),
                    trigger(TriggerRecord::Weekly, 7, 0, 1, 0x22),
                    trigger(TriggerRecord::MonthlyDate, 8, 0, 1, qint16(0x8000), 0x801),
                    trigger(TriggerRecord::MonthlyDow, 9, 30, 5, 0x7F, 0xFFF),
                    trigger(TriggerRecord::OnIdle, 0, 0),
                    trigger(TriggerRecord::Daily, 6, 5, 3)};
    odd.triggers[0].setWord(TriggerRecord::Reserved2, 0x1234);
    odd.triggers[1].setLongWord(TriggerRecord::Flags, TriggerRecord::FlagDisabled);
    TaskDefinition relative;
    relative.applicationName = u"tunecatch"_s;
    relative.priority = TaskPriority::Idle;
    relative.maxRunTime = 1;
    const std::pair<QString, TaskDefinition> rows[] = {{u"Jazz24_2009-01-31_20-15"_s, recording()},
                                                       {u"Radio Één/2 .x"_s, odd},
                                                       {u".hidden"_s, relative},
                                                       {u"empty"_s, TaskDefinition()}};
    for (const auto &[name, definition] : rows) {
        SCOPED_TRACE(name.toStdString());
        service.save(name, definition);
        const std::shared_ptr<Task> task = readBack(name);
        ASSERT_NE(task, nullptr);
        EXPECT_EQ(definitionOf(*task), definition);
        for (const TriggerRecord &record : definition.triggers)
            EXPECT_TRUE(unitText(name, u".timer"_s)
                            .contains(u"X-Tunecatch-Trigger="_s +
                                      QString::fromLatin1(record.bytes().toHex()) + u'\n'));
    }
    EXPECT_EQ(schedule->Count(), 4);
    expectVerified(u"Radio Één/2 .x"_s);
}

TEST_F(SystemdStore, TheUnitsUseSystemdsOwnSettingsAndPassItsChecks)
{
    TaskDefinition weekly = recording();
    weekly.flags = 0;
    weekly.priority = TaskPriority::Idle;
    weekly.maxRunTime = 90 * 60 * 1000;
    weekly.triggers = {trigger(TriggerRecord::Daily, 6, 5, 1), trigger(TriggerRecord::Weekly, 7, 0, 1, 0x41),
                       trigger(TriggerRecord::MonthlyDate, 8, 0, 1, qint16(0x4000), 0x801),
                       trigger(TriggerRecord::MonthlyDow, 9, 30, 5, 0x02, 0xFFF),
                       trigger(TriggerRecord::MonthlyDow, 9, 30, 2, 0x20, 0x1)};
    service.save(u"Jazz24_2009-01-31_20-15"_s, recording());
    service.save(u"weekly"_s, weekly);
    const QString serviceText = unitText(u"Jazz24_2009-01-31_20-15"_s, u".service"_s);
    const QString folder = QFileInfo(program).absolutePath();
    EXPECT_TRUE(serviceText.contains(u"\nDescription=Recording from Jazz 24\n"_s));
    EXPECT_TRUE(serviceText.contains(u"\nWorkingDirectory="_s + folder + u"/\n"_s));
    EXPECT_TRUE(serviceText.contains(u"\nExecStart=\""_s + folder +
                                     u"/tune%%catch\" -s \".\\\\%%STATION%%_%%DATE%%_%%TIME%%.mp3\" -a "
                                     "http://10.0.0.5:8000/live?a=$$HOME -w Jazz 24 -n -xs -t 60 -v\n"_s))
        << serviceText.toStdString();
    EXPECT_TRUE(serviceText.contains(u"\nRuntimeMaxSec=259200000ms\nNice=0\n"_s));
    EXPECT_TRUE(unitText(u"Jazz24_2009-01-31_20-15"_s, u".timer"_s)
                    .contains(u"\nOnCalendar=2031-01-31 21:15:00\n"_s));
    EXPECT_TRUE(unitText(u"weekly"_s, u".service"_s).contains(u"\nRuntimeMaxSec=5400000ms\nNice=19\n"_s));
    QStringList calendars;
    for (const TriggerRecord &record : weekly.triggers)
        calendars.append(onCalendarFor(record).value_or(QString()));
    EXPECT_EQ(calendars,
              (QStringList{u"*-*-* 06:05:00"_s, u"Sun,Sat *-*-* 07:00:00"_s, u"*-01,12-01,31 08:00:00"_s,
                           u"Mon *-*~01..07 09:30:00"_s, u"Fri *-01-08..14 09:30:00"_s}));
    for (const QString &calendar : calendars) {
        QProcess analyze;
        analyze.start(u"systemd-analyze"_s, {u"calendar"_s, calendar});
        ASSERT_TRUE(analyze.waitForFinished(20000));
        EXPECT_EQ(analyze.exitCode(), 0)
            << calendar.toStdString() << analyze.readAllStandardError().toStdString();
    }
    expectVerified(u"Jazz24_2009-01-31_20-15"_s);
    expectVerified(u"weekly"_s);
}

TEST_F(SystemdStore, NamesAreEscapedAsSystemdEscapesThemAndBadOnesAreRefused)
{
    for (const QString &name : {u"Jazz24_2009-01-31_20-15"_s, u"Radio Één/2"_s, u".x@y\\z"_s}) {
        EXPECT_EQ(SystemdTaskService::unitBase(name), escaped(name));
        service.save(name, {});
    }
    EXPECT_EQ(service.taskNames(),
              (QStringList{u"Jazz24_2009-01-31_20-15"_s, u"Radio Één/2"_s, u".x@y\\z"_s}));
    for (const QString &bad : {QString(), u"line\nbreak"_s, QString(250, u'é')})
        EXPECT_EQ(errorNumber([&] { service.newWorkItem(bad); }), AppError::InvalidArgument) << bad.size();
    EXPECT_EQ(errorNumber([&] { service.newWorkItem(u"Radio Één/2"_s); }),
              TaskErrors::FileAlreadyExistsNumber);
    EXPECT_EQ(errorNumber([&] { service.activate(u"absent"_s); }), AppError::FileNotFound);
    EXPECT_EQ(errorNumber([&] { service.checkText(TaskService::TextField::Comment, u"two\nlines"_s); }),
              AppError::InvalidArgument);
    EXPECT_EQ(errorNumber([&] { service.checkText(TaskService::TextField::WorkingDirectory, u"rel/dir"_s); }),
              AppError::InvalidArgument);
}

TEST_F(SystemdStore, FilesChangedByHandOrNotWrittenByTheProgramAreLeftOutAndAlone)
{
    service.save(u"good"_s, recording());
    const QString folder = unitFolder();
    const auto write = [&folder](const QString &file, const QByteArray &bytes) {
        TempProfile::writeFile(folder + u'/' + file, bytes);
    };
    for (const QString &name : {u"edited"_s, u"halfgone"_s, u"truncated"_s})
        service.save(name, recording());
    QByteArray edited = TempProfile::readFile(folder + u"/edited.timer"_s);
    edited.replace("21:15", "21:45");
    write(u"edited.timer"_s, edited);
    QFile::remove(folder + u"/halfgone.service"_s);
    write(u"truncated.service"_s, TempProfile::readFile(folder + u"/truncated.service"_s).left(300));
    write(u"mine.timer"_s, "[Timer]\nOnCalendar=daily\n");
    write(u"mine.service"_s, "[Service]\nExecStart=/bin/true\n");
    write(u"junk.timer"_s, QByteArray(5000, '\xFF'));
    write(u"junk.service"_s, "");
    write(u"bad\\xZZ.timer"_s, "");
    Schedule refreshed(service);
    refreshed.Refresh();
    ASSERT_EQ(refreshed.Count(), 1);
    EXPECT_EQ(refreshed.Job(1)->Name(), u"good"_s);
    const QByteArray mine = TempProfile::readFile(folder + u"/mine.timer"_s);
    EXPECT_EQ(errorNumber([&] { service.remove(u"mine"_s); }), AppError::PermissionDenied);
    EXPECT_EQ(errorNumber([&] { service.remove(u"edited"_s); }), AppError::PermissionDenied);
    EXPECT_EQ(errorNumber([&] { service.save(u"mine"_s, recording()); }), AppError::PermissionDenied);
    EXPECT_EQ(errorNumber([&] { service.newWorkItem(u"mine"_s); }), TaskErrors::FileAlreadyExistsNumber);
    EXPECT_EQ(TempProfile::readFile(folder + u"/mine.timer"_s), mine);
    EXPECT_EQ(TempProfile::readFile(folder + u"/edited.timer"_s), edited);
}

TEST_F(SystemdStore, ActivationGoesThroughSystemctlAndTheTimerIsLinkedOnlyWhenItCanStart)
{
    const QString base = escaped(u"Jazz24_2009-01-31_20-15"_s);
    const QString link = unitFolder() + u"/timers.target.wants/"_s + base + u".timer"_s;
    TaskDefinition task = recording();
    service.save(u"Jazz24_2009-01-31_20-15"_s, task);
    EXPECT_EQ(systemctl.calls, (QStringList{u"daemon-reload"_s, u"restart "_s + base + u".timer"_s}));
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), unitFolder() + u'/' + base + u".timer"_s);
    systemctl.calls.clear();
    task.flags |= TaskFlags::Disabled;
    service.save(u"Jazz24_2009-01-31_20-15"_s, task);
    EXPECT_EQ(systemctl.calls, (QStringList{u"daemon-reload"_s, u"stop "_s + base + u".timer"_s}));
    EXPECT_FALSE(QFileInfo(link).isSymLink());
    systemctl.calls.clear();
    service.run(u"Jazz24_2009-01-31_20-15"_s);
    service.terminate(u"Jazz24_2009-01-31_20-15"_s);
    service.remove(u"Jazz24_2009-01-31_20-15"_s);
    EXPECT_EQ(systemctl.calls, (QStringList{u"start --no-block "_s + base + u".service"_s,
                                            u"stop --no-block "_s + base + u".service"_s,
                                            u"stop "_s + base + u".timer"_s, u"daemon-reload"_s}));
    EXPECT_TRUE(QDir(unitFolder()).entryList(QDir::Files).isEmpty());
}

TEST_F(SystemdStore, WithoutAUserManagerTheTaskIsStillSavedAndReportsNothing)
{
    systemctl.reachable = false;
    Schedule tasks(service);
    const std::shared_ptr<Task> task = tasks.CreateTask(u"offline"_s);
    task->SetApplicationName(program);
    task->Triggers()->Add();
    task->Save();
    EXPECT_EQ(systemctl.calls, (QStringList{u"daemon-reload"_s})) << "asked once, then left alone";
    EXPECT_FALSE(service.isRunning());
    EXPECT_EQ(task->Status(), 0);
    EXPECT_TRUE(task->NextRunTime().isNull());
    EXPECT_EQ(errorNumber([&] { task->Run(); }), TaskErrors::ServiceNotRunningNumber);
    ASSERT_NE(readBack(u"offline"_s), nullptr);
    EXPECT_EQ(readBack(u"offline"_s)->ApplicationName(), program);
}

TEST_F(SystemdStore, RunFactsAreReadFromSystemctlShow)
{
    service.save(u"shown"_s, recording());
    // What `systemctl show` prints for the timer, then for the service.
    const auto show = [](const char *next, const char *last, const char *start, int status,
                         const char *active) -> QByteArray {
        return "NextElapseUSecRealtime="_ba + next + "\nLastTriggerUSec=" + last +
               "\nActiveState=active\n\n" + "ExecMainStartTimestamp=" + start +
               "\nExecMainStatus=" + QByteArray::number(status) + "\nActiveState=" + active + "\n";
    };
    const QDateTime at2115(QDate(2031, 1, 31), QTime(21, 15), QTimeZone::utc());
    const char *const at2115Text = "Fri 2031-01-31 21:15:00 UTC";
    const QDateTime started = QDateTime::fromSecsSinceEpoch(1927487700);
    const struct
    {
        QByteArray output;
        qint32 status, exitCode;
        QDateTime last, next;
    } rows[] = {{show(at2115Text, "", "", 0, "inactive"), TaskStatus::HasNotRun, 0, {}, at2115},
                {show("", at2115Text, "@1927487700", 0, "active"), TaskStatus::Running, 0, started, {}},
                {show("", at2115Text, "", 3, "failed"), TaskStatus::NoMoreRuns, 3, at2115, {}},
                {show("", "", "", 0, "inactive"), TaskStatus::NotScheduled, 0, {}, {}},
                {"garbage", 0, 0, {}, {}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.output.toStdString());
        systemctl.showOutput = row.output;
        const TaskRunState state = service.runState(u"shown"_s);
        EXPECT_EQ(state.status, row.status);
        EXPECT_EQ(state.exitCode, row.exitCode);
        EXPECT_EQ(state.lastRun, row.last);
        EXPECT_EQ(state.nextRun, row.next);
    }
    EXPECT_TRUE(
        systemctl.calls.contains(u"show --timestamp=unix --property=ActiveState,NextElapseUSecRealtime,"
                                 "LastTriggerUSec,ExecMainStartTimestamp,ExecMainStatus -- shown.timer "
                                 "shown.service"_s));
}

TEST_F(SystemdStore, AOnceOnlyTaskThatDeletesItselfRemovesExactlyItsOwnFilesWhenItStops)
{
    service.save(u"once"_s, recording());
    TaskDefinition daily = recording();
    daily.triggers = {trigger(TriggerRecord::Daily, 6, 5, 1)};
    service.save(u"daily"_s, daily);
    EXPECT_FALSE(unitText(u"daily"_s, u".service"_s).contains(u"ExecStopPost"_s))
        << "a repeating task has starts left after its first run";
    const QRegularExpression stopPost(u"\nExecStopPost=(.*)\n"_s);
    const QRegularExpressionMatch match = stopPost.match(unitText(u"once"_s, u".service"_s));
    ASSERT_TRUE(match.hasMatch());
    const std::optional<QStringList> words = UnitText::splitExecLine(match.captured(1));
    ASSERT_TRUE(words);
    QProcess rm;
    rm.start(words->first(), words->mid(1));
    ASSERT_TRUE(rm.waitForFinished(10000));
    EXPECT_EQ(rm.exitCode(), 0);
    QStringList left = QDir(unitFolder()).entryList(QDir::Files | QDir::System, QDir::Name);
    left += QDir(unitFolder() + u"/timers.target.wants"_s).entryList(QDir::Files | QDir::System, QDir::Name);
    EXPECT_EQ(left, (QStringList{u"daily.service"_s, u"daily.timer"_s, u"daily.timer"_s}));
}

TEST_F(SystemdStore, AFolderThatCannotBeWrittenFailsTheSaveWithItsPath)
{
    TempProfile::writeFile(profile.root() + u"/file"_s, "x");
    SystemdTaskService blocked(profile.root() + u"/file/systemd/user"_s, systemctl);
    try {
        blocked.save(u"x"_s, recording());
        FAIL() << "saved into a folder that cannot exist";
    } catch (const AppError &error) {
        EXPECT_EQ(error.number(), AppError::PathFileAccess);
        EXPECT_TRUE(error.description().contains(profile.root() + u"/file/systemd/user"_s));
    }
    EXPECT_TRUE(systemctl.calls.isEmpty());
}

} // namespace
