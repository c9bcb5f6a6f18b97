// The systemd store in a temporary unit folder, with systemctl replaced by a
// recorder of its calls; the units it writes are checked by systemd's own tools.
#include "base/apperror.h"
#include "schedule/oncalendar.h"
#include "schedule/recordingscheduler.h"
#include "schedule/schedule.h"
#include "schedule/systemdtaskservice.h"
#include "schedule/task.h"
#include "schedule/taskerrors.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "schedule/unitfile.h"
#include "support/errornumber.h"
#include "support/eventwait.h"
#include "support/memorytaskservice.h"
#include "support/recordingsystemctl.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "support/usermanager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
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

// When systemd, reading the calendar itself, first starts it (in UTC); null when it cannot.
QDateTime nextElapse(const QString &calendar)
{
    QProcess analyze;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TZ"_s, u"UTC"_s);
    analyze.setProcessEnvironment(environment);
    analyze.start(u"systemd-analyze"_s, {u"calendar"_s, calendar});
    if (!analyze.waitForFinished(20000) || analyze.exitCode() != 0)
        return {};
    const QRegularExpressionMatch next = QRegularExpression(u"Next elapse: \\w+ (\\S+ \\S+) UTC"_s)
                                             .match(QString::fromUtf8(analyze.readAllStandardOutput()));
    return next.hasMatch() ? QDateTime::fromString(next.captured(1), u"yyyy-MM-dd HH:mm:ss"_s) : QDateTime();
}

// The earliest of the calendars; null when one of them does not parse.
QDateTime firstElapse(const QStringList &calendars)
{
    QDateTime first;
    for (const QString &calendar : calendars) {
        const QDateTime next = nextElapse(calendar);
        if (next.isNull())
            return {};
        first = first.isNull() ? next : qMin(first, next);
    }
    return first;
}

TriggerRecord beginning(TriggerRecord record, QDate day)
{
    record.setWord(TriggerRecord::BeginYear, qint16(day.year()));
    record.setWord(TriggerRecord::BeginMonth, qint16(day.month()));
    record.setWord(TriggerRecord::BeginDay, qint16(day.day()));
    return record;
}

TriggerRecord ending(TriggerRecord record, QDate day)
{
    record.setLongWord(TriggerRecord::Flags, TriggerRecord::FlagHasEndDate);
    record.setWord(TriggerRecord::EndYear, qint16(day.year()));
    record.setWord(TriggerRecord::EndMonth, qint16(day.month()));
    record.setWord(TriggerRecord::EndDay, qint16(day.day()));
    return record;
}

TEST(OnCalendar, BeginAndEndDaysBoundTheRepeatsAndSystemdReadsTheBoundsSo)
{
    using R = TriggerRecord;
    const QDate today(2031, 1, 10);
    const struct
    {
        const char *what;
        TriggerRecord record;
        QStringList calendars;
        QDateTime first;
    } rows[] = {
        {"Mondays from mid-February",
         beginning(trigger(R::Weekly, 6, 0, 1, 0x2), QDate(2031, 2, 15)),
         {u"Mon 2031-02-15..31 06:00:00"_s, u"Mon 2031-03..12-* 06:00:00"_s,
          u"Mon 2032..2199-*-* 06:00:00"_s},
         QDateTime(QDate(2031, 2, 17), QTime(6, 0))},
        {"every day, begun already",
         beginning(trigger(R::Daily, 6, 0, 1), QDate(2031, 1, 1)),
         {u"*-*-* 06:00:00"_s},
         {}},
        {"every day from 20 January to 5 March",
         ending(beginning(trigger(R::Daily, 6, 0, 1), QDate(2031, 1, 20)), QDate(2031, 3, 5)),
         {u"2031-01-20..31 06:00:00"_s, u"2031-02-* 06:00:00"_s, u"2031-03-01..05 06:00:00"_s},
         QDateTime(QDate(2031, 1, 20), QTime(6, 0))},
        {"the last Friday from 25 February",
         beginning(trigger(R::MonthlyDow, 6, 0, 5, 0x20, 0xFFF), QDate(2031, 2, 25)),
         {u"Fri 2031-02-25..28 06:00:00"_s, u"Fri 2031-03..12~01..07 06:00:00"_s,
          u"Fri 2032..2199-*~01..07 06:00:00"_s},
         QDateTime(QDate(2031, 2, 28), QTime(6, 0))},
        {"the 1st and 15th of January and July from 12 January",
         beginning(trigger(R::MonthlyDate, 6, 0, qint16(0x4001), 0, 0x41), QDate(2031, 1, 12)),
         {u"2031-01-15 06:00:00"_s, u"2031-07-01,15 06:00:00"_s, u"2032..2199-01,07-01,15 06:00:00"_s},
         QDateTime(QDate(2031, 1, 15), QTime(6, 0))},
        {"ended before today", ending(trigger(R::Daily, 6, 0, 1), QDate(2031, 1, 5)), {}, {}},
        {"once",
         trigger(R::Once, 21, 15),
         {u"2031-01-31 21:15:00"_s},
         QDateTime(QDate(2031, 1, 31), QTime(21, 15))}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const QStringList calendars = onCalendarsFor(row.record, today);
        EXPECT_EQ(calendars, row.calendars);
        const QDateTime first = firstElapse(calendars);
        EXPECT_EQ(calendars.isEmpty() || first.isValid(), true) << "systemd cannot read them";
        if (row.first.isValid()) {
            EXPECT_EQ(first, row.first);
        }
    }
}

TEST(OnCalendar, EveryFewDaysOrWeeksIsLeftToAConditionCountedFromTheBeginDay)
{
    using R = TriggerRecord;
    const QDate today = QDate::currentDate();
    const struct
    {
        const char *what;
        TriggerRecord record;
        bool runsToday;
    } rows[] = {
        {"every 2 days from today", beginning(trigger(R::Daily, 6, 0, 2), today), true},
        {"every 2 days from yesterday", beginning(trigger(R::Daily, 6, 0, 2), today.addDays(-1)), false},
        {"every 3 days from 6 days ago", beginning(trigger(R::Daily, 6, 0, 3), today.addDays(-6)), true},
        {"every 2 weeks from this week", beginning(trigger(R::Weekly, 6, 0, 2, 0x7F), today), true},
        {"every 2 weeks from last week", beginning(trigger(R::Weekly, 6, 0, 2, 0x7F), today.addDays(-7)),
         false},
        {"every 2 weeks from 2 weeks ago", beginning(trigger(R::Weekly, 6, 0, 2, 0x7F), today.addDays(-14)),
         true}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const std::optional<QStringList> condition = intervalCondition(row.record);
        ASSERT_TRUE(condition);
        EXPECT_EQ(onCalendarsFor(row.record, today).size(), 1) << "it runs on the plain calendar";
        EXPECT_EQ(QProcess::execute(condition->first(), condition->mid(1)) == 0, row.runsToday);
    }
    EXPECT_FALSE(intervalCondition(trigger(R::Daily, 6, 0, 1)));
    EXPECT_FALSE(intervalCondition(trigger(R::MonthlyDow, 6, 0, 2, 0x2, 0xFFF)));
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
    odd.triggers = {trigger(TriggerRecord::Daily, 6, 5, 1), trigger(TriggerRecord::Weekly, 7, 0, 1, 0x22),
                    trigger(TriggerRecord::MonthlyDate, 8, 0, 1, qint16(0x4000), 0x801),
                    trigger(TriggerRecord::MonthlyDow, 9, 30, 5, 0x7F, 0xFFF),
                    trigger(TriggerRecord::OnIdle, 0, 0)};
    odd.triggers[0].setWord(TriggerRecord::Reserved2, 0x1234);
    odd.triggers[1].setLongWord(TriggerRecord::Flags, TriggerRecord::FlagDisabled);
    TaskDefinition relative;
    relative.applicationName = u"tunecatch"_s;
    relative.priority = TaskPriority::Idle;
    relative.maxRunTime = 1;
    relative.triggers = {trigger(TriggerRecord::Daily, 6, 5, 3)};
    relative.triggers[0].setWord(TriggerRecord::RandomInterval, 15);
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
        calendars += onCalendarsFor(record, QDate(2031, 2, 1));
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
    for (const QString &bad : {QString(), u"line\nbreak"_s})
        EXPECT_EQ(errorNumber([&] { service.newWorkItem(bad); }), AppError::InvalidArgument) << bad.size();
    EXPECT_EQ(errorNumber([&] { service.newWorkItem(u"Radio Één/2"_s); }),
              TaskErrors::FileAlreadyExistsNumber);
    EXPECT_EQ(errorNumber([&] { service.activate(u"absent"_s); }), AppError::FileNotFound);
    EXPECT_EQ(errorNumber([&] { service.checkText(TaskService::TextField::Comment, u"two\nlines"_s); }),
              AppError::InvalidArgument);
    EXPECT_EQ(errorNumber([&] { service.checkText(TaskService::TextField::WorkingDirectory, u"rel/dir"_s); }),
              AppError::InvalidArgument);
}

// Station names whose escaped form is longer than systemd's 255-byte unit names.
TEST_F(SystemdStore, LongStationNamesAreScheduledListedAndDeletedUnderAShortenedUnitName)
{
    const QString cyrillic = u"Радио"_s.repeated(6);           // 30 letters
    const QString cjk = u"古典音樂廣播電台東京"_s.repeated(2); // 20 letters
    RecordingEditor editor;
    ScriptedPrompt prompt;
    QObject owner;
    QStringList names;
    for (const QString &station : QStringList{cyrillic, cjk, cyrillic + u'!', QString(300, u'x')}) {
        RecordingInputs inputs;
        inputs.station = station;
        inputs.streamAddress = u"http://h/x"_s;
        const RecordingScheduler scheduler(
            inputs, [] { return QDateTime(QDate(2031, 1, 31), QTime(20, 15)); }, program);
        scheduler.scheduleRecording(service, &editor, &owner, prompt, [] {});
        names.append(scheduler.BuildTaskName());
        const QString base = SystemdTaskService::unitBase(names.last());
        EXPECT_LE((base + u".service"_s).toUtf8().size(), 255);
        EXPECT_TRUE(QFileInfo::exists(unitFolder() + u'/' + base + u".timer"_s)) << "Schedule did nothing";
    }
    EXPECT_NE(SystemdTaskService::unitBase(names[0]), SystemdTaskService::unitBase(names[2]))
        << "names that differ only past the cut keep their own units";
    QStringList listed = service.taskNames();
    listed.sort();
    QStringList expected = names;
    expected.sort();
    EXPECT_EQ(listed, expected);
    for (const QString &name : names) {
        SCOPED_TRACE(name.toStdString());
        const std::shared_ptr<Task> task = readBack(name);
        ASSERT_NE(task, nullptr);
        EXPECT_EQ(task->Comment(), u"Recording from "_s + name.section(u'_', 0, 0));
        const QString base = unitFolder() + u'/' + SystemdTaskService::unitBase(name);
        QProcess verify;
        verify.setProcessChannelMode(QProcess::MergedChannels);
        verify.start(u"systemd-analyze"_s,
                     {u"verify"_s, u"--user"_s, base + u".timer"_s, base + u".service"_s});
        ASSERT_TRUE(verify.waitForFinished(30000));
        EXPECT_EQ(verify.exitCode(), 0) << verify.readAll().toStdString();
    }
    for (const QString &name : names)
        service.remove(name);
    EXPECT_TRUE(service.taskNames().isEmpty());
    EXPECT_TRUE(QDir(unitFolder()).entryList(QDir::Files).isEmpty());
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
    // A new task that cannot start yet (the Schedule button's first save) is no news to the manager.
    systemctl.calls.clear();
    Schedule(service).CreateTask(u"new"_s);
    EXPECT_TRUE(systemctl.calls.isEmpty());
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

TEST_F(SystemdStore, RunFactsAreReadFromOneSystemctlShowForAllListedTasks)
{
    service.save(u"shown"_s, recording());
    service.save(u"zother"_s, recording());
    // What `systemctl show` prints for a timer, then for its service.
    const auto show = [](const char *next, const char *last, const char *start, int status,
                         const char *active) -> QByteArray {
        return "NextElapseUSecRealtime="_ba + next + "\nLastTriggerUSec=" + last +
               "\nActiveState=active\n\n" + "ExecMainStartTimestamp=" + start +
               "\nExecMainStatus=" + QByteArray::number(status) + "\nActiveState=" + active + "\n\n";
    };
    const QDateTime at2115(QDate(2031, 1, 31), QTime(21, 15), QTimeZone::utc());
    const char *const at2115Text = "Fri 2031-01-31 21:15:00 UTC";
    const QDateTime started = QDateTime::fromSecsSinceEpoch(1927487700);
    const QByteArray other = show("", "", "", 7, "inactive");
    const struct
    {
        QByteArray output;
        qint32 status, exitCode;
        QDateTime last, next;
    } rows[] = {
        {show(at2115Text, "", "", 0, "inactive") + other, TaskStatus::HasNotRun, 0, {}, at2115},
        {show("", at2115Text, "@1927487700", 0, "active") + other, TaskStatus::Running, 0, started, {}},
        {show("", at2115Text, "", 3, "failed") + other, TaskStatus::NoMoreRuns, 3, at2115, {}},
        {show("", "", "", 0, "inactive") + other, TaskStatus::NotScheduled, 0, {}, {}},
        {"garbage", 0, 0, {}, {}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.output.toStdString());
        systemctl.showOutput = row.output;
        service.taskNames();
        EXPECT_EQ(service.managerReachable(), std::nullopt) << "a new listing asks again";
        QSignalSpy known(&service, &SystemdTaskService::runStatesKnown);
        service.queryRunStates();
        EXPECT_EQ(known.size(), 1);
        const TaskRunState state = service.runState(u"shown"_s);
        EXPECT_EQ(state.status, row.status);
        EXPECT_EQ(state.exitCode, row.exitCode);
        EXPECT_EQ(state.lastRun, row.last);
        EXPECT_EQ(state.nextRun, row.next);
        EXPECT_EQ(service.runState(u"zother"_s).exitCode, row.output == "garbage" ? 0 : 7);
    }
    EXPECT_EQ(
        systemctl.calls.last(),
        u"show --timestamp=unix --property=ActiveState,NextElapseUSecRealtime,LastTriggerUSec,"
        "ExecMainStartTimestamp,ExecMainStatus -- shown.timer shown.service zother.timer zother.service"_s);
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
    EXPECT_TRUE(unitText(u"once"_s, u".service"_s)
                    .contains(u"\nExecStopPost=systemctl --user --no-block daemon-reload\n"_s))
        << "the manager forgets the removed units";
    QProcess rm;
    rm.start(words->first(), words->mid(1));
    ASSERT_TRUE(rm.waitForFinished(10000));
    EXPECT_EQ(rm.exitCode(), 0);
    QStringList left = QDir(unitFolder()).entryList(QDir::Files | QDir::System, QDir::Name);
    left += QDir(unitFolder() + u"/timers.target.wants"_s).entryList(QDir::Files | QDir::System, QDir::Name);
    EXPECT_EQ(left, (QStringList{u"daily.service"_s, u"daily.timer"_s, u"daily.timer"_s}));
}

TEST_F(SystemdStore, AWeeklyTaskWithABeginDayNextMonthDoesNotRunBeforeIt)
{
    const QDate begin = QDate::currentDate().addMonths(1);
    TaskDefinition weekly = recording();
    weekly.triggers = {beginning(trigger(TriggerRecord::Weekly, 7, 0, 1, 0x7F), begin)};
    service.save(u"weekly"_s, weekly);
    QStringList calendars;
    for (const QString &line : unitText(u"weekly"_s, u".timer"_s).split(u'\n')) {
        if (line.startsWith(u"OnCalendar="))
            calendars.append(line.section(u'=', 1));
    }
    EXPECT_EQ(firstElapse(calendars), QDateTime(begin, QTime(7, 0)));
    expectVerified(u"weekly"_s);
}

TEST_F(SystemdStore, ATaskTheUnitsCannotRunAsSetIsRefusedAtSaveWithItsReason)
{
    using R = TriggerRecord;
    const auto with = [](TriggerRecord record, R::Field field, qint32 value, bool wide = false) {
        wide ? record.setLongWord(field, value) : record.setWord(field, qint16(value));
        return record;
    };
    const TriggerRecord once = trigger(R::Once, 21, 15);
    const TriggerRecord everyOtherDay = trigger(R::Daily, 6, 0, 2);
    const struct
    {
        const char *what;
        QList<TriggerRecord> triggers;
        QString refusal; // a part of the reason; empty when saved
    } rows[] = {{"every 10 minutes for an hour",
                 {with(with(once, R::Duration, 60, true), R::Interval, 10, true)},
                 u"every few minutes"_s},
                {"every other day beside another start", {everyOtherDay, once}, u"every few days or weeks"_s},
                {"different random delays",
                 {with(once, R::RandomInterval, 5), with(trigger(R::Daily, 6, 0, 1), R::RandomInterval, 10)},
                 u"same random delay"_s},
                {"month 13", {with(once, R::BeginMonth, 13)}, u"does not exist"_s},
                {"every other day alone", {everyOtherDay}, {}},
                {"the same random delay",
                 {with(once, R::RandomInterval, 5), with(trigger(R::Daily, 6, 0, 1), R::RandomInterval, 5)},
                 {}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        TaskDefinition definition = recording();
        definition.triggers = row.triggers;
        const QString name = QString::fromLatin1(row.what);
        try {
            service.save(name, definition);
            EXPECT_TRUE(row.refusal.isEmpty()) << "saved";
        } catch (const AppError &error) {
            EXPECT_EQ(error.number(), AppError::InvalidArgument);
            EXPECT_TRUE(!row.refusal.isEmpty() && error.description().contains(row.refusal))
                << error.description().toStdString();
        }
        EXPECT_EQ(QFileInfo::exists(unitFolder() + u'/' + escaped(name) + u".timer"_s),
                  row.refusal.isEmpty());
    }
    EXPECT_TRUE(unitText(u"the same random delay"_s, u".timer"_s).contains(u"\nRandomizedDelaySec=5min\n"_s));
    EXPECT_TRUE(
        unitText(u"every other day alone"_s, u".service"_s).contains(u"\nExecCondition=/bin/sh -c "_s));
    expectVerified(u"every other day alone"_s);
}

TEST_F(SystemdStore, AnInteractiveRecordingGetsTheSessionsDisplay)
{
    SystemdTaskService shown(unitFolder(), systemctl, {u"DISPLAY=:77"_s, u"XAUTHORITY=/home/ann/x \"1\""_s});
    SystemdTaskService displayless(unitFolder(), systemctl, {});
    TaskDefinition interactive = recording();
    TaskDefinition unseen = recording();
    unseen.flags &= ~TaskFlags::Interactive;
    shown.save(u"interactive"_s, interactive);
    shown.save(u"unseen"_s, unseen);
    displayless.save(u"displayless"_s, interactive);
    EXPECT_TRUE(unitText(u"interactive"_s, u".service"_s)
                    .contains(u"\nEnvironment=\"DISPLAY=:77\" \"XAUTHORITY=/home/ann/x \\\"1\\\"\"\n"_s));
    EXPECT_FALSE(unitText(u"unseen"_s, u".service"_s).contains(u"Environment="_s));
    EXPECT_FALSE(unitText(u"displayless"_s, u".service"_s).contains(u"Environment="_s));
    EXPECT_TRUE(shown.showsWindow(interactive));
    EXPECT_FALSE(shown.showsWindow(unseen));
    EXPECT_FALSE(displayless.showsWindow(interactive));
    expectVerified(u"interactive"_s);
    qputenv("DISPLAY", ":5");
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("XAUTHORITY");
    EXPECT_EQ(SystemdTaskService::sessionDisplay(), QStringList{u"DISPLAY=:5"_s});
    qunsetenv("DISPLAY");
}

TEST_F(SystemdStore, AServiceLeftWithoutItsTimerIsCleanedUpAndKeepsNoNameFromUse)
{
    const auto orphan = [this](const QString &name, int minutesOld) {
        service.save(name, recording());
        QFile::remove(service.pathsFor(name).timer);
        QFile file(service.pathsFor(name).service);
        file.open(QIODevice::ReadWrite);
        file.setFileTime(QDateTime::currentDateTime().addSecs(-60 * minutesOld),
                         QFileDevice::FileModificationTime);
    };
    orphan(u"old"_s, 2);
    orphan(u"fresh"_s, 0);
    TempProfile::writeFile(unitFolder() + u"/mine.service"_s, "[Service]\nExecStart=/bin/true\n");
    EXPECT_TRUE(service.taskNames().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(service.pathsFor(u"old"_s).service));
    EXPECT_TRUE(QFileInfo::exists(service.pathsFor(u"fresh"_s).service)) << "perhaps a save in progress";
    EXPECT_TRUE(QFileInfo::exists(unitFolder() + u"/mine.service"_s)) << "not the program's";
    EXPECT_EQ(errorNumber([&] { service.newWorkItem(u"fresh"_s); }), 0);
    EXPECT_FALSE(QFileInfo::exists(service.pathsFor(u"fresh"_s).service));
    EXPECT_EQ(errorNumber([&] { service.newWorkItem(u"mine"_s); }), TaskErrors::FileAlreadyExistsNumber);
}

// systemd itself reads the units and runs them, in a user service manager of the test's own.
TEST_F(SystemdStore, SystemdRunsTheUnitsAsWritten)
{
    UserManager manager;
    if (!manager.running())
        GTEST_SKIP() << manager.why().toStdString();
    const QString folder = QFileInfo(program).absolutePath();
    // A program that writes down the words it was given and its environment.
    const auto echo = [&folder](const QString &name) {
        const QString path = folder + u'/' + name;
        TempProfile::writeFile(path, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.args\"\nenv > \"$0.env\"\n");
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        return path;
    };
    const auto start = [](const QString &unit) {
        EXPECT_EQ(UserManager::systemctl({u"daemon-reload"_s}).exitCode, 0);
        const Systemctl::Result started = UserManager::systemctl({u"start"_s, u"--"_s, unit});
        EXPECT_EQ(started.exitCode, 0) << started.error.toStdString();
    };
    SystemdTaskService store(unitFolder(), systemctl, {u"DISPLAY=:77"_s});

    // Run once, interactive, deleted when done: its words and display, then nothing left.
    TaskDefinition once = recording();
    once.applicationName = echo(u"echo 100% args"_s);
    once.parameters = u"-s D:\\My Music\\ -a http://h/x?a=$HOME&b=%20 -w \"Jazz\" 'n' ;  Één  -v"_s;
    store.save(u"run me"_s, once);
    start(QFileInfo(store.pathsFor(u"run me"_s).service).fileName());
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(once.applicationName + u".env"_s); }, 20000));
    ASSERT_TRUE(waitUntil([&] { return !QFileInfo::exists(store.pathsFor(u"run me"_s).timer); }, 20000));
    EXPECT_EQ(QString::fromUtf8(TempProfile::readFile(once.applicationName + u".args"_s)).split(u'\n'),
              once.parameters.split(u' ') + QStringList{QString()});
    EXPECT_TRUE(TempProfile::readFile(once.applicationName + u".env"_s).contains("\nDISPLAY=:77\n"));
    EXPECT_TRUE(waitUntil(
        [] {
            return !UserManager::systemctl({u"list-units"_s, u"--all"_s, u"--plain"_s, u"--no-legend"_s})
                        .output.contains("run\\x20me");
        },
        20000))
        << "the manager reloaded after the files went";

    // Every other day counted from yesterday: not today.
    TaskDefinition everyOther = recording();
    everyOther.applicationName = echo(u"every other"_s);
    everyOther.flags = 0;
    everyOther.triggers = {
        beginning(trigger(TriggerRecord::Daily, 6, 0, 2), QDate::currentDate().addDays(-1))};
    store.save(u"every other"_s, everyOther);
    const QString unit = QFileInfo(store.pathsFor(u"every other"_s).service).fileName();
    start(unit);
    EXPECT_EQ(UserManager::systemctl({u"show"_s, u"--property=ConditionResult"_s, u"--"_s, unit}).output,
              "ConditionResult=no\n");
    EXPECT_FALSE(QFileInfo::exists(everyOther.applicationName + u".args"_s));

    // A weekly timer that begins next month is due next month.
    const QDate begin = QDate::currentDate().addMonths(1);
    TaskDefinition weekly = recording();
    weekly.triggers = {beginning(trigger(TriggerRecord::Weekly, 7, 0, 1, 0x7F), begin)};
    store.save(u"weekly"_s, weekly);
    const QString timer = QFileInfo(store.pathsFor(u"weekly"_s).timer).fileName();
    start(timer);
    // The timer's own times come as "Thu 2031-01-31 07:00:00 UTC", whatever is asked.
    const QString next = QString::fromUtf8(
        UserManager::systemctl({u"show"_s, u"--property=NextElapseUSecRealtime"_s, u"--"_s, timer}).output);
    EXPECT_EQ(next, u"NextElapseUSecRealtime="_s +
                        QDateTime(begin, QTime(7, 0)).toUTC().toString(u"ddd yyyy-MM-dd HH:mm:ss"_s) +
                        u" UTC\n"_s)
        << next.toStdString();
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
