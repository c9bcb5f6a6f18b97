// The Schedule button's logic: the task name, the command line and the task
// it registers, over a task store in memory.
#include "support/memorytaskservice.h"
#include "schedule/recordingscheduler.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

RecordingInputs jazz()
{
    return {u"Jazz24"_s, u"D:\\Music"_s, u"10.0.0.5:8000/live"_s, true, false, true, 0, {u"60"_s, u"700"_s}};
}

// The day of the month and the time of day the task's first trigger starts.
QString startOf(const TaskDefinition &task)
{
    const TriggerRecord &t = task.triggers.first();
    return u"%1 %2"_s.arg(t.word(TriggerRecord::BeginDay))
        .arg(
            QTime(t.word(TriggerRecord::StartHour), t.word(TriggerRecord::StartMinute)).toString(u"HH:mm"_s));
}

std::function<QDateTime()> clockAt(QTime time)
{
    return [time] { return QDateTime(QDate(2009, 1, 31), time); };
}

TEST(RecordingScheduler, TheNameAndTheCommandLineAreBuiltPieceByPiece)
{
    EXPECT_EQ(RecordingScheduler(jazz(), clockAt(QTime(20, 15, 59)), {}).BuildTaskName(),
              u"Jazz24_2009-01-31_20-15"_s);
    RecordingInputs odd = jazz();
    odd.station = u"Big %DATE% band %time%"_s;
    EXPECT_EQ(RecordingScheduler(odd, clockAt(QTime(7, 5)), {}).BuildTaskName(),
              u"Big 2009-01-31 band %time%_2009-01-31_07-05"_s);
    const struct
    {
        std::function<void(RecordingInputs &)> change;
        QString line;
    } rows[] = {{[](RecordingInputs &) {}, u"-s D:\\Music -a 10.0.0.5:8000/live -w Jazz24 -n -xs -t 60 -v"_s},
                {[](RecordingInputs &in) { in.hibernate = true; },
                 u"-s D:\\Music -a 10.0.0.5:8000/live -w Jazz24 -n -xh -t 60 -v"_s},
                {[](RecordingInputs &in) {
                     in.singleSong = in.shutDown = false;
                     in.selectedBreak = 1;
                 },
                 u"-s D:\\Music -a 10.0.0.5:8000/live -w Jazz24 -b 700 -v"_s},
                {[](RecordingInputs &in) {
                     in.selectedBreak = -1;
                     in.station = u"Jazz 24  FM"_s;
                     in.saveLocation = u"./My Music/%STATION%.mp3"_s;
                 },
                 u"-s ./My Music/%STATION%.mp3 -a 10.0.0.5:8000/live -w Jazz 24  FM -n -xs -v"_s}};
    for (const auto &row : rows) {
        RecordingInputs inputs = jazz();
        row.change(inputs);
        EXPECT_EQ(RecordingScheduler(inputs, clockAt(QTime(20, 15)), {}).BuildScheduleCommandLine(),
                  row.line);
    }
}

class Registering : public ::testing::Test
{
public:
    void SetUp() override { qputenv("USER", "ann"); }
    void TearDown() override { m_hadUser ? qputenv("USER", m_user) : qunsetenv("USER"); }
    void click(QTime at, const QString &program = u"/opt/tunecatch/tunecatch"_s)
    {
        RecordingScheduler(jazz(), clockAt(at), program)
            .scheduleRecording(service, &editor, &owner, prompt, [this] { ++opened; });
    }
    const TaskDefinition &task() const { return *service.tasks.cbegin(); }
    MemoryTaskService service;
    RecordingEditor editor;
    ScriptedPrompt prompt;
    QObject owner;
    int opened = 0;

private:
    const bool m_hadUser = qEnvironmentVariableIsSet("USER");
    const QByteArray m_user = qgetenv("USER");
};

TEST_F(Registering, TheTaskRepeatsTheRecordingAnHourFromNowAndOpensTheDialog)
{
    prompt.answers = {true};
    click(QTime(20, 15, 40));
    ASSERT_EQ(service.tasks.keys(), QStringList{u"Jazz24_2009-01-31_20-15"_s});
    EXPECT_EQ(task().applicationName, u"tunecatch"_s);
    EXPECT_EQ(task().workingDirectory, u"/opt/tunecatch/"_s);
    EXPECT_EQ(task().creator, u"Tunecatch"_s);
    EXPECT_EQ(task().parameters, u"-s D:\\Music -a 10.0.0.5:8000/live -w Jazz24 -n -xs -t 60 -v"_s);
    EXPECT_EQ(task().comment, u"Recording from Jazz24"_s);
    EXPECT_EQ(task().flags, 9219);
    EXPECT_EQ(task().account, u"ann"_s);
    ASSERT_EQ(task().triggers.size(), 1);
    EXPECT_EQ(task().triggers.first().type(), TriggerRecord::Once);
    EXPECT_EQ(task().triggers.first().longWord(TriggerRecord::Flags), 0);
    EXPECT_EQ(startOf(task()), u"31 21:15"_s);
    EXPECT_EQ(editor.owners, QList<QObject *>{&owner});
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_EQ(prompt.shown[0].text, u"Do you wish open Task Scheduler?"_s);
    EXPECT_EQ(opened, 1);
}

TEST_F(Registering, LateInTheEveningTheStartFallsOnTheSameDayAlreadyPast)
{
    click(QTime(23, 30), u"/tunecatch"_s);
    EXPECT_EQ(startOf(task()), u"31 00:30"_s);
    EXPECT_EQ(task().workingDirectory, u"//"_s);
    EXPECT_EQ(opened, 0) << "No to the question";
}

TEST_F(Registering, ASecondClickInTheSameMinuteEndsSilently)
{
    click(QTime(20, 15));
    const TaskDefinition first = task();
    prompt.shown.clear();
    editor.owners.clear();
    click(QTime(20, 15, 50));
    EXPECT_EQ(service.tasks.size(), 1);
    EXPECT_EQ(task(), first);
    EXPECT_TRUE(prompt.shown.isEmpty());
    EXPECT_TRUE(editor.owners.isEmpty());
}

TEST_F(Registering, CancelInTheDialogDeletesTheTaskJustMadeAndEndsTheClick)
{
    editor.confirmed = false;
    prompt.answers = {true};
    click(QTime(20, 15));
    EXPECT_EQ(editor.owners.size(), 1);
    EXPECT_TRUE(service.tasks.isEmpty()) << "no recording for a user who cancelled";
    EXPECT_TRUE(prompt.shown.isEmpty());
    EXPECT_EQ(opened, 0);
}

TEST_F(Registering, AStepTheStoreRefusesIsSkippedAndTheRestIsSaved)
{
    service.refused.insert(TaskService::TextField::Comment, u"Recording from Jazz24"_s);
    service.refused.insert(TaskService::TextField::Account, u"ann"_s);
    RecordingScheduler(jazz(), clockAt(QTime(20, 15)), u"/opt/tunecatch/tunecatch"_s)
        .scheduleRecording(service, nullptr, &owner, prompt, [] {});
    EXPECT_EQ(task().comment, QString());
    EXPECT_EQ(task().account, QString());
    EXPECT_EQ(task().flags, 9219);
    EXPECT_EQ(task().triggers.size(), 1);
    EXPECT_EQ(prompt.shown.size(), 1) << "no property sheet is no reason to stop";
}

TEST_F(Registering, WithoutUserTheAccountIsTheLoginName)
{
    qunsetenv("USER");
    TempProfile profile;
    TempProfile::writeFile(profile.root() + u"/mine"_s, "x");
    EXPECT_EQ(taskAccountName(), QFileInfo(profile.root() + u"/mine"_s).owner());
    EXPECT_FALSE(taskAccountName().isEmpty());
}

TEST(StopConditions, TheDialogReadsAndReplacesTheStopConditionOfTheCommandLine)
{
    const struct
    {
        QString line;
        StopCondition read;
        StopCondition replacement;
        QString replaced;
    } rows[] = {{u"-s x -w J -t 60 -v"_s,
                 {StopCondition::Minutes, u"60"_s},
                 {StopCondition::Megabytes, u"5"_s},
                 u"-s x -w J -b 5 -v"_s},
                {u"-s x -t 60 -b 7 -v"_s, {StopCondition::Megabytes, u"7"_s}, {}, u"-s x -v"_s},
                {u"-s x -w J"_s, {}, {StopCondition::Minutes, u"90"_s}, u"-s x -w J -t 90"_s},
                {u"-s a  b -v -m"_s, {}, {StopCondition::Minutes, u"1"_s}, u"-s a  b -v -m -t 1"_s},
                {QString(), {}, {StopCondition::Minutes, u"1"_s}, u"-t 1"_s}};
    for (const auto &row : rows) {
        EXPECT_EQ(readStopCondition(row.line), row.read) << row.line.toStdString();
        EXPECT_EQ(withStopCondition(row.line, row.replacement), row.replaced) << row.line.toStdString();
    }
}

} // namespace
