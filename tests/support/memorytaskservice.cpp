#include "support/memorytaskservice.h"

#include "base/apperror.h"
#include "schedule/taskerrors.h"

using namespace Qt::StringLiterals;

void MemoryTaskService::SetTargetComputer(const QString &computer)
{
    if (computer == u"unreachable")
        throw AppError(-2147023174, u"The RPC server is unavailable."_s);
    m_computer = computer;
}

QStringList MemoryTaskService::Enum()
{
    if (enumFails)
        throw AppError::invalidArgument();
    return order;
}

TaskDefinition MemoryTaskService::NewWorkItem(const QString &name)
{
    if (name.isEmpty())
        throw TaskErrors::BadTaskName(name, u"empty"_s);
    if (tasks.contains(name))
        throw TaskErrors::TaskExists(name);
    return {};
}

TaskDefinition MemoryTaskService::Activate(const QString &name)
{
    if (!tasks.contains(name))
        throw TaskErrors::TaskNotFound(name);
    if (unreadable.contains(name))
        throw TaskErrors::Damaged(name);
    return tasks.value(name);
}

void MemoryTaskService::Save(const QString &name, const TaskDefinition &definition)
{
    if (!tasks.contains(name))
        order.append(name);
    tasks.insert(name, definition);
}

void MemoryTaskService::Delete(const QString &name)
{
    if (!tasks.remove(name))
        throw TaskErrors::TaskNotFound(name + u".job"_s);
    order.removeAll(name);
}

void MemoryTaskService::CheckText(TextField field, const QString &value) const
{
    if (refused.contains(field) && refused.value(field) == value)
        throw TaskErrors::Refused(u"refused"_s);
}

QString MemoryTaskService::FileName(const QString &name) const
{
    return u"mem:"_s + name;
}

void MemoryTaskService::Run(const QString &name)
{
    requests.append(u"run "_s + name);
}
