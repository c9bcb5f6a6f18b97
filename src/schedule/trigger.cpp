#include "schedule/trigger.h"

#include "base/apperror.h"
#include "schedule/taskerrors.h"
#include "schedule/workitem.h"

#include <limits>

namespace {

using F = TriggerRecord::Field;

qint16 toWord(qint64 value)
{
    if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
        throw AppError::overflow();
    return qint16(value);
}

QDate dateAt(const TriggerRecord &record, F year, F month, F day)
{
    return QDate(record.word(year), record.word(month), record.word(day));
}

void setDateAt(TriggerRecord &record, QDate date, F year, F month, F day)
{
    const qint16 y = toWord(date.year());
    record.setWord(year, y);
    record.setWord(month, qint16(date.month()));
    record.setWord(day, qint16(date.day()));
}

} // namespace

Trigger::Trigger(std::shared_ptr<WorkItem> item, int index)
    : m_item(std::move(item)), m_index(index), m_record(m_item->GetTrigger(index))
{
}

Trigger::~Trigger()
{
    // Released triggers write their copy back; one whose index has gone
    // (removed behind its back) has nowhere to write to.
    try {
        Update();
    } catch (const AppError &) {
    }
}

QDate Trigger::BeginDay() const
{
    return dateAt(m_record, F::BeginYear, F::BeginMonth, F::BeginDay);
}

void Trigger::setBeginDay(QDate day)
{
    setDateAt(m_record, day, F::BeginYear, F::BeginMonth, F::BeginDay);
}

QDate Trigger::EndDay() const
{
    return dateAt(m_record, F::EndYear, F::EndMonth, F::EndDay);
}

void Trigger::setEndDay(QDate day)
{
    setDateAt(m_record, day, F::EndYear, F::EndMonth, F::EndDay);
}

QTime Trigger::StartTime() const
{
    return QTime(m_record.word(F::StartHour), m_record.word(F::StartMinute), 0);
}

void Trigger::setStartTime(QTime time)
{
    m_record.setWord(F::StartHour, qint16(time.hour()));
    m_record.setWord(F::StartMinute, qint16(time.minute()));
}

qint32 Trigger::Duration() const
{
    return m_record.longWord(F::Duration);
}

void Trigger::setDuration(qint32 minutes)
{
    m_record.setLongWord(F::Duration, minutes);
}

qint32 Trigger::Interval() const
{
    return m_record.longWord(F::Interval);
}

void Trigger::setInterval(qint32 minutes)
{
    m_record.setLongWord(F::Interval, minutes);
}

qint32 Trigger::Flags() const
{
    return m_record.longWord(F::Flags);
}

void Trigger::SetFlags(qint32 flags)
{
    m_record.setLongWord(F::Flags, flags);
}

qint32 Trigger::TriggerType() const
{
    return m_record.type();
}

void Trigger::setTriggerType(qint32 type)
{
    m_record.setLongWord(F::TriggerType, type);
}

int Trigger::RandomInterval() const
{
    return m_record.word(F::RandomInterval);
}

void Trigger::setRandomInterval(int minutes)
{
    m_record.setWord(F::RandomInterval, toWord(minutes));
}

void Trigger::requireType(qint32 type) const
{
    if (m_record.type() != type)
        throw TaskErrors::invalidTriggerType();
}

qint16 Trigger::typeWord(F field, qint32 type) const
{
    requireType(type);
    return m_record.word(field);
}

void Trigger::setTypeWord(F field, qint32 type, qint64 value)
{
    requireType(type);
    m_record.setWord(field, toWord(value));
}

int Trigger::Daily_Interval() const
{
    return typeWord(F::TypeWord0, TriggerRecord::Daily);
}

void Trigger::setDaily_Interval(int days)
{
    setTypeWord(F::TypeWord0, TriggerRecord::Daily, days);
}

int Trigger::Weekly_Interval() const
{
    return typeWord(F::TypeWord0, TriggerRecord::Weekly);
}

void Trigger::setWeekly_Interval(int weeks)
{
    setTypeWord(F::TypeWord0, TriggerRecord::Weekly, weeks);
}

qint32 Trigger::Weekly_DaysOfTheWeek() const
{
    return typeWord(F::TypeWord1, TriggerRecord::Weekly);
}

void Trigger::setWeekly_DaysOfTheWeek(qint32 mask)
{
    setTypeWord(F::TypeWord1, TriggerRecord::Weekly, mask);
}

qint32 Trigger::MonthlyDate_Day() const
{
    requireType(TriggerRecord::MonthlyDate);
    return m_record.longWord(F::TypeWord0);
}

void Trigger::setMonthlyDate_Day(qint32 mask)
{
    requireType(TriggerRecord::MonthlyDate);
    m_record.setLongWord(F::TypeWord0, mask);
}

qint32 Trigger::MonthlyDate_Months() const
{
    return typeWord(F::TypeWord2, TriggerRecord::MonthlyDate);
}

void Trigger::setMonthlyDate_Months(qint32 mask)
{
    setTypeWord(F::TypeWord2, TriggerRecord::MonthlyDate, mask);
}

qint32 Trigger::MonthlyDOW_Week() const
{
    return typeWord(F::TypeWord0, TriggerRecord::MonthlyDow);
}

void Trigger::setMonthlyDOW_Week(qint32 week)
{
    setTypeWord(F::TypeWord0, TriggerRecord::MonthlyDow, week);
}

qint32 Trigger::MonthlyDOW_DaysOfTheWeek() const
{
    return typeWord(F::TypeWord1, TriggerRecord::MonthlyDow);
}

void Trigger::setMonthlyDOW_DaysOfTheWeek(qint32 mask)
{
    setTypeWord(F::TypeWord1, TriggerRecord::MonthlyDow, mask);
}

qint32 Trigger::MonthlyDOW_Months() const
{
    return typeWord(F::TypeWord2, TriggerRecord::MonthlyDow);
}

void Trigger::setMonthlyDOW_Months(qint32 mask)
{
    setTypeWord(F::TypeWord2, TriggerRecord::MonthlyDow, mask);
}

QString Trigger::Text() const
{
    return describeTrigger(m_item->GetTrigger(m_index));
}

void Trigger::Refresh()
{
    m_record = m_item->GetTrigger(m_index);
}

void Trigger::Update()
{
    m_item->setTrigger(m_index, m_record);
    m_record = m_item->GetTrigger(m_index);
}
