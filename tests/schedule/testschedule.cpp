// The scheduler classes over a task store in memory.
#include "base/apperror.h"
#include "schedule/schedule.h"
#include "schedule/task.h"
#include "schedule/taskerrors.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "support/errornumber.h"
#include "support/memorytaskservice.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Little-endian bytes of a record, written out by hand: offset, value, offset, value...
QByteArray record(std::initializer_list<quint32> words16, std::initializer_list<quint32> words32)
{
    QByteArray bytes(46, '\0');
    bytes[0] = 46;
    for (const auto &[words, width] : {std::pair{words16, 2}, {words32, 4}}) {
        for (auto at = words.begin(); at != words.end(); at += 2) {
            for (int i = 0; i < width; ++i)
                bytes[int(*at) + i] = char((at[1] >> (8 * i)) & 0xFF);
        }
    }
    return bytes;
}

TriggerRecord onceAt2115()
{
    TriggerRecord trigger;
    trigger.setWord(TriggerRecord::BeginYear, 2031);
    trigger.setWord(TriggerRecord::BeginMonth, 1);
    trigger.setWord(TriggerRecord::BeginDay, 31);
    trigger.setWord(TriggerRecord::StartHour, 21);
    trigger.setWord(TriggerRecord::StartMinute, 15);
    return trigger;
}

class ScheduleTest : public ::testing::Test
{
public:
    // A task in the store with the given triggers, read back through a Schedule.
    std::shared_ptr<Task> stored(const QString &name, int triggers)
    {
        TaskDefinition definition;
        for (int i = 0; i < triggers; ++i) {
            TriggerRecord trigger = onceAt2115();
            trigger.setWord(TriggerRecord::StartHour, qint16(i + 1));
            trigger.setWord(TriggerRecord::StartMinute, 0);
            definition.triggers.append(trigger);
        }
        service.save(name, definition);
        schedule.Refresh();
        return schedule.Job(name);
    }
    std::shared_ptr<Trigger> trigger(qint32 type)
    {
        std::shared_ptr<Trigger> made = stored(u"t"_s, 0)->Triggers()->Add();
        made->setTriggerType(type);
        return made;
    }
    MemoryTaskService service;
    RecordingEditor editor;
    Schedule schedule{service, &editor};
};

TEST_F(ScheduleTest, TheRecordHoldsEachPropertyAtItsOffset)
{
    const std::shared_ptr<Trigger> t = trigger(TriggerRecord::Weekly);
    t->setBeginDay(QDate(2009, 1, 31));
    t->setEndDay(QDate(2010, 12, 24));
    t->setStartTime(QTime(23, 59, 40));
    t->setDuration(600);
    t->setInterval(15);
    t->SetFlags(0x10203);
    t->setWeekly_Interval(2);
    t->setWeekly_DaysOfTheWeek(0x41);
    t->setRandomInterval(-2);
    EXPECT_EQ(t->record().bytes(), record({4,  2009, 6,  1,  8,  31, 10, 2010, 12,   12, 14,
                                           24, 16,   23, 18, 59, 36, 2,  38,   0x41, 44, 0xFFFE},
                                          {20, 600, 24, 15, 28, 0x10203, 32, 2}));
    EXPECT_EQ(t->StartTime(), QTime(23, 59, 0));
    EXPECT_EQ(t->BeginDay(), QDate(2009, 1, 31));
    EXPECT_EQ(t->RandomInterval(), -2);
    // The monthly day mask spans type words 0 and 1.
    t->setTriggerType(TriggerRecord::MonthlyDate);
    t->setMonthlyDate_Day(qint32(0x80000001));
    t->setMonthlyDate_Months(0xFFF);
    EXPECT_EQ(t->record().bytes().mid(32, 10),
              record({34, 0, 36, 1, 38, 0x8000, 40, 0xFFF}, {32, 3}).mid(32, 10));
    EXPECT_EQ(t->MonthlyDate_Day(), qint32(0x80000001));
}

TEST_F(ScheduleTest, TypeSpecificPropertiesBelongToOneTypeAndSixteenBitsOverflow)
{
    struct Row
    {
        const char *name;
        qint32 type;
        int (Trigger::*read)() const;
        void (Trigger::*write)(int);
        bool sixteenBits;
    };
    using T = Trigger;
    const Row rows[] = {
        {"Daily_Interval", 1, &T::Daily_Interval, &T::setDaily_Interval, true},
        {"Weekly_Interval", 2, &T::Weekly_Interval, &T::setWeekly_Interval, true},
        {"Weekly_DaysOfTheWeek", 2, &T::Weekly_DaysOfTheWeek, &T::setWeekly_DaysOfTheWeek, true},
        {"MonthlyDate_Day", 3, &T::MonthlyDate_Day, &T::setMonthlyDate_Day, false},
        {"MonthlyDate_Months", 3, &T::MonthlyDate_Months, &T::setMonthlyDate_Months, true},
        {"MonthlyDOW_Week", 4, &T::MonthlyDOW_Week, &T::setMonthlyDOW_Week, true},
        {"MonthlyDOW_DaysOfTheWeek", 4, &T::MonthlyDOW_DaysOfTheWeek, &T::setMonthlyDOW_DaysOfTheWeek, true},
        {"MonthlyDOW_Months", 4, &T::MonthlyDOW_Months, &T::setMonthlyDOW_Months, true}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        for (qint32 type = 0; type <= 7; ++type) {
            const std::shared_ptr<Trigger> t = trigger(type);
            const QByteArray before = t->record().bytes();
            const int expected = type == row.type ? 0 : TaskErrors::InvalidTriggerTypeNumber;
            EXPECT_EQ(errorNumber([&] { (*t.*row.read)(); }), expected) << type;
            EXPECT_EQ(errorNumber([&] { (*t.*row.write)(5); }), expected) << type;
            if (type != row.type) {
                EXPECT_EQ(t->record().bytes(), before);
            }
        }
        const std::shared_ptr<Trigger> t = trigger(row.type);
        EXPECT_EQ(errorNumber([&] { (*t.*row.write)(32767); }), 0);
        const QByteArray before = t->record().bytes();
        EXPECT_EQ(errorNumber([&] { (*t.*row.write)(32768); }),
                  row.sixteenBits ? int(AppError::Overflow) : 0);
        if (row.sixteenBits) {
            EXPECT_EQ(t->record().bytes(), before);
        }
    }
    try {
        trigger(TriggerRecord::Weekly)->Daily_Interval();
        ADD_FAILURE() << "a weekly trigger gave a daily interval";
    } catch (const AppError &error) {
        EXPECT_EQ(error.description(), u"Invalid trigger type"_s);
    }
    const std::shared_ptr<Task> task = stored(u"words"_s, 0);
    EXPECT_EQ(errorNumber([&] { trigger(1)->setRandomInterval(-32769); }), AppError::Overflow);
    EXPECT_EQ(errorNumber([&] { task->SetErrorRetryCount(40000); }), AppError::Overflow);
    EXPECT_EQ(errorNumber([&] { task->SetErrorRetryInterval(-40000); }), AppError::Overflow);
    EXPECT_EQ(errorNumber([&] { task->SetIdleWait(10, 32768); }), AppError::Overflow);
    int idle = -1, deadline = -1;
    task->GetIdleWait(idle, deadline);
    EXPECT_EQ(idle, 0) << "a failed SetIdleWait changes neither value";
    EXPECT_EQ(deadline, 0);
}

TEST_F(ScheduleTest, TheListFillsOnlyByRefreshAndSkipsTasksThatCannotBeRead)
{
    service.save(u"b"_s, {});
    service.save(u"a"_s, {});
    service.save(u"broken"_s, {});
    service.unreadable.insert(u"broken"_s);
    EXPECT_EQ(schedule.Count(), 0);
    schedule.Refresh();
    ASSERT_EQ(schedule.Count(), 2);
    EXPECT_EQ(schedule.Job(1)->Name(), u"b"_s);
    EXPECT_EQ(schedule.Job(u"a"_s)->Name(), u"a"_s);
    const auto walked = schedule.NewEnum();
    ASSERT_EQ(walked.size(), 2);
    EXPECT_EQ(walked[0]->Name() + walked[1]->Name(), u"ba"_s);
    EXPECT_EQ(errorNumber([&] { schedule.Job(3); }), AppError::SubscriptOutOfRange);
    EXPECT_EQ(errorNumber([&] { schedule.Job(u"broken"_s); }), AppError::InvalidArgument);
    service.enumFails = true;
    schedule.Refresh();
    EXPECT_EQ(schedule.Count(), 0);
    service.enumFails = false;
    schedule.setTargetComputer(u"here"_s);
    EXPECT_EQ(schedule.Count(), 2) << "a new target computer refills the list";
    EXPECT_EQ(errorNumber([&] { schedule.setTargetComputer(u"unreachable"_s); }), -2147023174);
}

TEST_F(ScheduleTest, ACreatedTaskIsStoredAtOnceButHasNoNameSoItCannotBeDeletedByIt)
{
    const std::shared_ptr<Task> task = schedule.CreateTask(u"Jazz24_2009-01-31_20-15"_s);
    EXPECT_EQ(task->Name(), QString());
    EXPECT_EQ(schedule.Job(u"Jazz24_2009-01-31_20-15"_s), task);
    ASSERT_TRUE(service.tasks.contains(u"Jazz24_2009-01-31_20-15"_s));
    EXPECT_EQ(service.tasks.value(u"Jazz24_2009-01-31_20-15"_s).creator, u"Tunecatch"_s);
    EXPECT_EQ(errorNumber([&] { schedule.CreateTask(u"Jazz24_2009-01-31_20-15"_s); }),
              TaskErrors::FileAlreadyExistsNumber);
    EXPECT_EQ(errorNumber([&] { schedule.Delete(u"Jazz24_2009-01-31_20-15"_s); }), AppError::FileNotFound);
    EXPECT_EQ(schedule.Count(), 1);
    schedule.Refresh();
    schedule.Delete(1);
    EXPECT_EQ(schedule.Count(), 0);
    EXPECT_TRUE(service.tasks.isEmpty());
}

TEST_F(ScheduleTest, ChangesReachTheStoreOnlyBySaveAndRefusedValuesLeaveTheOldOne)
{
    const std::shared_ptr<Task> task = stored(u"props"_s, 0);
    task->setCommandLine(u"-s x -v"_s);
    EXPECT_EQ(service.tasks.value(u"props"_s).parameters, QString());
    task->Save();
    EXPECT_EQ(service.tasks.value(u"props"_s).parameters, u"-s x -v"_s);
    service.refused.insert(TaskService::TextField::Comment, u"bad"_s);
    task->SetComment(u"good"_s);
    EXPECT_EQ(errorNumber([&] { task->SetComment(u"bad"_s); }), AppError::InvalidArgument);
    EXPECT_EQ(task->Comment(), u"good"_s);
    EXPECT_EQ(errorNumber([&] { task->SetPriority(12345); }), AppError::InvalidArgument);
    EXPECT_EQ(task->Priority(), TaskPriority::Normal);
    EXPECT_EQ(errorNumber([&] { task->SetAccountInfo(u"ann"_s, u"secret"_s); }), AppError::InvalidArgument);
    task->Save(u"copy"_s);
    EXPECT_EQ(service.tasks.value(u"copy"_s).comment, u"good"_s);
    task->Run();
    EXPECT_EQ(service.requests, QStringList{u"run props"_s}) << "the copy leaves the task its own name";
}

TEST_F(ScheduleTest, ThePropertySheetIsTheEditorsAndWithoutOneOpeningFails)
{
    const std::shared_ptr<Task> task = stored(u"run"_s, 0);
    EXPECT_EQ(task->StatusText(), QString()) << "status 0 has no text";
    QObject owner;
    task->ShowProperties(&owner);
    task->Edit(nullptr);
    EXPECT_EQ(editor.owners, (QList<QObject *>{&owner, nullptr}));
    Schedule bare(service);
    bare.Refresh();
    EXPECT_NE(errorNumber([&] { bare.Job(u"run"_s)->ShowProperties(&owner); }), 0);
}

TEST_F(ScheduleTest, TriggersWriteTheirCopyBackOnUpdateSaveOrRelease)
{
    const std::shared_ptr<Task> task = stored(u"trig"_s, 0);
    std::shared_ptr<Trigger> added = task->Triggers()->Add();
    EXPECT_EQ(added->Flags(), 0);
    added->setStartTime(QTime(21, 15));
    added->setTriggerType(TriggerRecord::Once);
    EXPECT_NE(added->Text(), u"At 21:15 on "_s + added->BeginDay().toString(u"yyyy-MM-dd"_s))
        << "Text describes the task's trigger, not the unsaved copy";
    const QString unsaved = added->Text();
    added.reset();
    EXPECT_EQ(task->Triggers()->item(1)->Text(), unsaved) << "the task's own list still holds the trigger";
    task->Triggers()->Update();
    EXPECT_TRUE(task->Triggers()->item(1)->Text().startsWith(u"At 21:15 on "_s))
        << "the last reference went: written back";
    task->Triggers()->item(1)->setStartTime(QTime(6, 0));
    task->Save();
    EXPECT_EQ(service.tasks.value(u"trig"_s).triggers.first().word(TriggerRecord::StartHour), 6);
    EXPECT_EQ(errorNumber([&] { task->Triggers()->item(2); }), AppError::SubscriptOutOfRange);
}

TEST_F(ScheduleTest, RemovingATriggerLeavesTheOthersWithTheirOldIndexUntilUpdate)
{
    const std::shared_ptr<Task> task = stored(u"two"_s, 2);
    const std::shared_ptr<::Triggers> triggers = task->Triggers();
    const std::shared_ptr<Trigger> second = triggers->item(2);
    triggers->Remove(1);
    EXPECT_EQ(triggers->Count(), 1);
    EXPECT_EQ(second->index(), 1);
    EXPECT_EQ(second->StartTime(), QTime(2, 0)) << "platform trigger 0 went, the second's copy stayed";
    EXPECT_NE(errorNumber([&] { second->Update(); }), 0);
    EXPECT_NE(errorNumber([&] { task->Save(); }), 0) << "Save updates the stale trigger too";
    EXPECT_EQ(errorNumber([&] { triggers->Remove(70000); }), AppError::Overflow);
    EXPECT_EQ(errorNumber([&] { triggers->Remove(2); }), AppError::SubscriptOutOfRange);
    triggers->Update();
    EXPECT_EQ(triggers->item(1)->index(), 0);
    EXPECT_EQ(triggers->item(1)->StartTime(), QTime(2, 0));
    task->Save();
    EXPECT_EQ(service.tasks.value(u"two"_s).triggers.size(), 1);
}

TEST_F(ScheduleTest, ATriggerWithValuesNoSchedulerTakesIsRefusedAndTheTaskKeepsItsOld)
{
    using R = TriggerRecord;
    const auto typed = [](qint32 type, qint16 word0, qint16 word1, qint16 word2) {
        TriggerRecord t = onceAt2115();
        t.setLongWord(R::TriggerType, type);
        t.setWord(R::TypeWord0, word0);
        t.setWord(R::TypeWord1, word1);
        t.setWord(R::TypeWord2, word2);
        return t;
    };
    const auto changed = [](TriggerRecord t, R::Field field, qint32 value, bool wide = false) {
        wide ? t.setLongWord(field, value) : t.setWord(field, qint16(value));
        return t;
    };
    TriggerRecord ended = changed(onceAt2115(), R::Flags, R::FlagHasEndDate, true);
    ended = changed(changed(changed(ended, R::EndYear, 2031), R::EndMonth, 1), R::EndDay, 30);
    const struct
    {
        const char *what;
        TriggerRecord record;
        bool taken;
    } rows[] = {{"once at 21:15", onceAt2115(), true},
                {"month 13", changed(onceAt2115(), R::BeginMonth, 13), false},
                {"February 30", changed(changed(onceAt2115(), R::BeginMonth, 2), R::BeginDay, 30), false},
                {"hour 25", changed(onceAt2115(), R::StartHour, 25), false},
                {"minute 60", changed(onceAt2115(), R::StartMinute, 60), false},
                {"end before begin", ended, false},
                {"end before begin, no end date", changed(ended, R::Flags, 0, true), true},
                {"type 9", changed(onceAt2115(), R::TriggerType, 9, true), false},
                {"interval not below duration",
                 changed(changed(onceAt2115(), R::Duration, 30, true), R::Interval, 30, true), false},
                {"random below zero", changed(onceAt2115(), R::RandomInterval, -1), false},
                {"every 0 days", typed(R::Daily, 0, 0, 0), false},
                {"every 2 weeks on no day", typed(R::Weekly, 2, 0, 0), false},
                {"every 2 weeks on Sunday", typed(R::Weekly, 2, 1, 0), true},
                {"day 32", typed(R::MonthlyDate, 0, qint16(0x8000), 0xFFF), false},
                {"no month", typed(R::MonthlyDate, 1, 0, 0), false},
                {"month 13 in the mask", typed(R::MonthlyDate, 1, 0, 0x1FFF), false},
                {"sixth week", typed(R::MonthlyDow, 6, 1, 0xFFF), false},
                {"last Monday of every month", typed(R::MonthlyDow, 5, 2, 0xFFF), true},
                {"idle", typed(R::OnIdle, 0, 0, 0), true}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        TaskDefinition definition;
        definition.triggers = {row.record};
        service.save(u"bad"_s, definition);
        schedule.Refresh();
        const std::shared_ptr<Task> task = schedule.Job(u"bad"_s);
        const std::shared_ptr<Trigger> trigger = task->Triggers()->item(1);
        EXPECT_EQ(errorNumber([&] { trigger->Update(); }), row.taken ? 0 : int(AppError::InvalidArgument));
        EXPECT_EQ(row.record.problem().isEmpty(), row.taken) << row.record.problem().toStdString();
        const TriggerRecord before = changed(onceAt2115(), R::StartHour, 3);
        service.tasks[u"bad"_s].triggers = {before};
        EXPECT_EQ(errorNumber([&] { task->Save(); }), row.taken ? 0 : int(AppError::InvalidArgument));
        EXPECT_EQ(service.tasks.value(u"bad"_s).triggers.first(), row.taken ? row.record : before)
            << "a refused save leaves the store as it was";
    }
}

} // namespace
