#include "schedule/workitem.h"

#include "schedule/taskerrors.h"

#include <QDateTime>

WorkItem::WorkItem(TaskService &taskService, TaskEditor *taskEditor, QString taskName, TaskDefinition taskDefinition)
    : service(taskService), editor(taskEditor), name(std::move(taskName)), definition(std::move(taskDefinition))
{
}

int WorkItem::triggerCount() const
{
    return int(definition.triggers.size());
}

int WorkItem::CreateTrigger()
{
    // A new trigger runs daily from now on until it is told otherwise.
    const QDateTime now = QDateTime::currentDateTime();
    TriggerRecord record;
    record.setWord(TriggerRecord::BeginYear, qint16(now.date().year()));
    record.setWord(TriggerRecord::BeginMonth, qint16(now.date().month()));
    record.setWord(TriggerRecord::BeginDay, qint16(now.date().day()));
    record.setWord(TriggerRecord::StartHour, qint16(now.time().hour()));
    record.setWord(TriggerRecord::StartMinute, qint16(now.time().minute()));
    record.setLongWord(TriggerRecord::TriggerType, TriggerRecord::Daily);
    record.setWord(TriggerRecord::TypeWord0, 1);
    definition.triggers.append(record);
    return triggerCount() - 1;
}

TriggerRecord WorkItem::GetTrigger(int index) const
{
    if (index < 0 || index >= triggerCount())
        throw TaskErrors::subscriptOutOfRange();
    TriggerRecord record = definition.triggers[index];
    record.setWord(TriggerRecord::RecordSize, TriggerRecord::byteCount);
    return record;
}

void WorkItem::setTrigger(int index, const TriggerRecord &record)
{
    if (index < 0 || index >= triggerCount())
        throw TaskErrors::subscriptOutOfRange();
    // Refused here, as a scheduler refuses it, rather than saved and never run.
    if (const QString problem = record.problem(); !problem.isEmpty())
        throw TaskErrors::refused(problem);
    definition.triggers[index] = record;
}

void WorkItem::DeleteTrigger(int index)
{
    if (index < 0 || index >= triggerCount())
        throw TaskErrors::subscriptOutOfRange();
    definition.triggers.removeAt(index);
}
