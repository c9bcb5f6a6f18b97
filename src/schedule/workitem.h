#pragma once

#include "schedule/taskservice.h"

// The task as it stands in memory between reading and saving it, shared by
// the Task, its Triggers and every Trigger bound to it. Changes reach the
// store only through Save.
struct WorkItem
{
    WorkItem(TaskService &service, TaskEditor *editor, QString name, TaskDefinition definition);

    TaskService &service;
    TaskEditor *editor;
    const QString name; // the name the store knows it by
    TaskDefinition definition;

    // The triggers by zero-based index, as a store's trigger interface offers
    // them; an index outside the list fails, and so does setting a record
    // with values no scheduler takes (TriggerRecord::problem).
    int triggerCount() const;
    int CreateTrigger();
    TriggerRecord GetTrigger(int index) const;
    void setTrigger(int index, const TriggerRecord &record);
    void DeleteTrigger(int index);
};
