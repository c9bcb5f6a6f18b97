#include "schedule/workitem.h"

#include "schedule/taskerrors.h"

#include <QDateTime>

WorkItem::WorkItem(TaskService &taskService, TaskEditor *taskEditor, QString taskName, TaskDefinition taskDefinition)
    : service(taskService), editor(taskEditor), name(std::move(taskName)), definition(std::move(taskDefinition))
{
}

int WorkItem::TriggerCount() const
{
    return int(definition.Triggers.size());
}

int WorkItem::CreateTrigger()
{
    // A new trigger runs daily from now on until it is told otherwise.
    const QDateTime now = QDateTime::currentDateTime();
    TriggerRecord record;
    record.SetWord(TriggerRecord::BeginYear, qint16(now.date().year()));
    record.SetWord(TriggerRecord::BeginMonth, qint16(now.date().month()));
    record.SetWord(TriggerRecord::BeginDay, qint16(now.date().day()));
    record.SetWord(TriggerRecord::StartHour, qint16(now.time().hour()));
    record.SetWord(TriggerRecord::StartMinute, qint16(now.time().minute()));
    record.SetLong(TriggerRecord::TriggerType, TriggerRecord::Daily);
    record.SetWord(TriggerRecord::TypeWord0, 1);
    definition.Triggers.append(record);
    return TriggerCount() - 1;
}

TriggerRecord WorkItem::GetTrigger(int index) const
{
    if (index < 0 || index >= TriggerCount())
        throw TaskErrors::SubscriptOutOfRange();
    TriggerRecord record = definition.Triggers[index];
    record.SetWord(TriggerRecord::RecordSize, TriggerRecord::Size);
    return record;
}

void WorkItem::SetTrigger(int index, const TriggerRecord &record)
{
    if (index < 0 || index >= TriggerCount())
        throw TaskErrors::SubscriptOutOfRange();
    definition.Triggers[index] = record;
}

void WorkItem::DeleteTrigger(int index)
{
    if (index < 0 || index >= TriggerCount())
        throw TaskErrors::SubscriptOutOfRange();
    definition.Triggers.removeAt(index);
}
