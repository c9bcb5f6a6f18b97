#include "schedule/schedule.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "schedule/task.h"
#include "schedule/taskerrors.h"
#include "schedule/workitem.h"

Schedule::Schedule(TaskService &service, TaskEditor *editor) : m_service(service), m_editor(editor) {}

Schedule::~Schedule() = default;

std::shared_ptr<Task> Schedule::CreateTask(const QString &name)
{
    TaskDefinition definition = m_service.newWorkItem(name);
    std::shared_ptr<Task> task(
        new Task(std::make_shared<WorkItem>(m_service, m_editor, name, std::move(definition))));
    task->SetCreator(AppInfo::title);
    task->Save();
    add(name, task);
    return task;
}

void Schedule::Delete(const QString &name)
{
    const int index = indexOf(name);
    if (index < 0)
        throw AppError::invalidArgument();
    deleteAt(index);
}

void Schedule::Delete(int position)
{
    deleteAt(indexAt(position));
}

void Schedule::deleteAt(int index)
{
    m_service.remove(m_tasks[index]->Name());
    m_keys.removeAt(index);
    m_tasks.removeAt(index);
}

std::shared_ptr<Task> Schedule::Job(const QString &name) const
{
    const int index = indexOf(name);
    if (index < 0)
        throw AppError::invalidArgument();
    return m_tasks[index];
}

std::shared_ptr<Task> Schedule::Job(int position) const
{
    return m_tasks[indexAt(position)];
}

void Schedule::Refresh()
{
    m_keys.clear();
    m_tasks.clear();
    QStringList names;
    try {
        names = m_service.taskNames();
    } catch (const AppError &) {
        return;
    }
    for (const QString &name : names) {
        try {
            std::shared_ptr<Task> task(
                new Task(std::make_shared<WorkItem>(m_service, m_editor, name, m_service.activate(name))));
            task->m_name = name;
            add(name, task);
        } catch (const AppError &) {
        }
    }
}

QString Schedule::TargetComputer() const
{
    return m_service.TargetComputer();
}

void Schedule::setTargetComputer(const QString &computer)
{
    m_service.setTargetComputer(computer);
    Refresh();
}

int Schedule::indexOf(const QString &name) const
{
    return int(m_keys.indexOf(name));
}

int Schedule::indexAt(int position) const
{
    if (position < 1 || position > m_tasks.size())
        throw TaskErrors::subscriptOutOfRange();
    return position - 1;
}

void Schedule::add(const QString &key, std::shared_ptr<Task> task)
{
    if (m_keys.contains(key))
        throw AppError(457,
                       AppError::tr("This key is already associated with an element of this collection"));
    m_keys.append(key);
    m_tasks.append(std::move(task));
}
