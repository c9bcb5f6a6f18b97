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
    void setBeginDay(QDate day);
    QDate EndDay() const;
    void setEndDay(QDate day);
    // Hour and minute; seconds read as zero and are dropped on writing.
    QTime StartTime() const;
    void setStartTime(QTime time);
    qint32 Duration() const;
    void setDuration(qint32 minutes);
    qint32 Interval() const;
    void setInterval(qint32 minutes);
    qint32 Flags() const;
    void SetFlags(qint32 flags);
    qint32 TriggerType() const;
    void setTriggerType(qint32 type);
    int RandomInterval() const;
    void setRandomInterval(int minutes);

    int Daily_Interval() const;
    void setDaily_Interval(int days);
    int Weekly_Interval() const;
    void setWeekly_Interval(int weeks);
    qint32 Weekly_DaysOfTheWeek() const;
    void setWeekly_DaysOfTheWeek(qint32 mask);
    qint32 MonthlyDate_Day() const;
    void setMonthlyDate_Day(qint32 mask);
    qint32 MonthlyDate_Months() const;
    void setMonthlyDate_Months(qint32 mask);
    qint32 MonthlyDOW_Week() const;
    void setMonthlyDOW_Week(qint32 week);
    qint32 MonthlyDOW_DaysOfTheWeek() const;
    void setMonthlyDOW_DaysOfTheWeek(qint32 mask);
    qint32 MonthlyDOW_Months() const;
    void setMonthlyDOW_Months(qint32 mask);

    // The task's own description of its trigger at this trigger's index.
    QString Text() const;
    // Reads the task's trigger at this index into the copy.
    void Refresh();
    // Writes the copy to the task's trigger at this index and reads it back.
    void Update();

    const TriggerRecord &record() const { return m_record; }
    int index() const { return m_index; }

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
