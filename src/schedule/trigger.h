#pragma once

#include "schedule/triggerrecord.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <memory>

struct WorkItem;

// One trigger of a task. It works on its own copy of the trigger record:
// setting a property changes only the copy, which reaches the task by Update
// (called by the program, by Task::Save, or when the last reference to the
// Trigger goes). Type-specific properties fail on a trigger of another type
// with "Invalid trigger type"; 16-bit properties fail with an overflow for
// values outside -32768..32767. The record is left as it was in both cases.
class Trigger
{
public:
    ~Trigger();
    Trigger(const Trigger &) = delete;
    Trigger &operator=(const Trigger &) = delete;

    QDate BeginDay() const;
    void SetBeginDay(QDate day);
    QDate EndDay() const;
    void SetEndDay(QDate day);
    // Hour and minute; seconds read as zero and are dropped on writing.
    QTime StartTime() const;
    void SetStartTime(QTime time);
    qint32 Duration() const;
    void SetDuration(qint32 minutes);
    qint32 Interval() const;
    void SetInterval(qint32 minutes);
    qint32 Flags() const;
    void SetFlags(qint32 flags);
    qint32 TriggerType() const;
    void SetTriggerType(qint32 type);
    int RandomInterval() const;
    void SetRandomInterval(int minutes);

    int Daily_Interval() const;
    void SetDaily_Interval(int days);
    int Weekly_Interval() const;
    void SetWeekly_Interval(int weeks);
    qint32 Weekly_DaysOfTheWeek() const;
    void SetWeekly_DaysOfTheWeek(qint32 mask);
    qint32 MonthlyDate_Day() const;
    void SetMonthlyDate_Day(qint32 mask);
    qint32 MonthlyDate_Months() const;
    void SetMonthlyDate_Months(qint32 mask);
    qint32 MonthlyDOW_Week() const;
    void SetMonthlyDOW_Week(qint32 week);
    qint32 MonthlyDOW_DaysOfTheWeek() const;
    void SetMonthlyDOW_DaysOfTheWeek(qint32 mask);
    qint32 MonthlyDOW_Months() const;
    void SetMonthlyDOW_Months(qint32 mask);

    // The task's own description of its trigger at this trigger's index.
    QString Text() const;
    // Reads the task's trigger at this index into the copy.
    void Refresh();
    // Writes the copy to the task's trigger at this index and reads it back.
    void Update();

    const TriggerRecord &Record() const { return m_record; }
    int Index() const { return m_index; }

private:
    friend class Triggers;
    Trigger(std::shared_ptr<WorkItem> item, int index);

    qint16 typeWord(TriggerRecord::Field field, qint32 type) const;
    void setTypeWord(TriggerRecord::Field field, qint32 type, qint64 value);
    void requireType(qint32 type) const;

    std::shared_ptr<WorkItem> m_item;
    int m_index;
    TriggerRecord m_record;
};
