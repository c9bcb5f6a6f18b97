#include "support/memorytaskservice.h"

#include "base/apperror.h"
#include "schedule/taskerrors.h"

using namespace Qt::StringLiterals;

void MemoryTaskService::setTargetComputer(const QString &computer)
{
    if (computer == u"unreachable")
        throw AppError(-2147023174, u"The RPC server is unavailable."_s);
    m_computer = computer;
}

QStringList MemoryTaskService::taskNames()
{
    if (enumFails)
        throw AppError::invalidArgument();
    return order;
}

TaskDefinition MemoryTaskService::newWorkItem(const QString &name)
{
    if (name.isEmpty())
        throw TaskErrors::badTaskName(name, u"empty"_s);
    if (tasks.contains(name))
        throw TaskErrors::taskExists(name);
    return {};
}

TaskDefinition MemoryTaskService::activate(const QString &name)
{
    if (!tasks.contains(name))
        throw TaskErrors::taskNotFound(name);
    if (unreadable.contains(name))
        throw TaskErrors::damaged(name);
    return tasks.value(name);
}

void MemoryTaskService::save(const QString &name, const TaskDefinition &definition)
{
    if (!tasks.contains(name))
        order.append(name);
    tasks.insert(name, definition);
}

void MemoryTaskService::remove(const QString &name)
{
    if (!tasks.remove(name))
        throw TaskErrors::taskNotFound(name + u".job"_s);
    order.removeAll(name);
}

void MemoryTaskService::checkText(TextField field, const QString &value) const
{
    if (refused.contains(field) && refused.value(field) == value)
        throw TaskErrors::refused(u"refused"_s);
}

QString MemoryTaskService::fileName(const QString &name) const
{
    return u"mem:"_s + name;
}

void MemoryTaskService::run(const QString &name)
{
    requests.append(u"run "_s + name);
}
