#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class Task;
class TaskEditor;
class TaskService;

// The scheduler's tasks as an ordered list keyed by task name. The list is
// empty until Refresh fills it from the service (directly, or by setting
// TargetComputer); CreateTask adds the tasks it makes.
class Schedule
{
public:
    // The editor is the property sheet tasks open; without one, opening fails.
    explicit Schedule(TaskService &service, TaskEditor *editor = nullptr);
    ~Schedule();
    Schedule(const Schedule &) = delete;
    Schedule &operator=(const Schedule &) = delete;

    int Count() const { return int(m_tasks.size()); }
    // Makes the task in the store at once (with this program as its creator)
    // and lists it under the name. The task's own Name stays empty: only
    // Refresh sets it.
    std::shared_ptr<Task> CreateTask(const QString &name);
    // Deletes the listed task's stored work item by the task's Name, then
    // drops the entry.
    void Delete(const QString &name);
    void Delete(int position);
    std::shared_ptr<Task> Job(const QString &name) const;
    std::shared_ptr<Task> Job(int position) const;
    QList<std::shared_ptr<Task>> NewEnum() const { return m_tasks; }
    // Rebuilds the list from the store; tasks that cannot be read are left out.
    void Refresh();
    QString TargetComputer() const;
    void setTargetComputer(const QString &computer);

private:
    int indexOf(const QString &name) const;
    int indexAt(int position) const;
    void deleteAt(int index);
    void add(const QString &key, std::shared_ptr<Task> task);

    TaskService &m_service;
    TaskEditor *m_editor;
    QStringList m_keys;
    QList<std::shared_ptr<Task>> m_tasks;
};
