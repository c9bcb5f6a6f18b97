#include "schedule/task.h"

#include "base/apperror.h"
#include "schedule/taskerrors.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"
#include "schedule/workitem.h"

#include <limits>

namespace {

qint16 toWord(int value)
{
    if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
        throw AppError::overflow();
    return qint16(value);
}

} // namespace

Task::Task(std::shared_ptr<WorkItem> item) : m_item(std::move(item)), m_triggers(new ::Triggers(m_item)) {}

Task::~Task() = default;

void Task::setText(TaskService::TextField field, QString TaskDefinition::*member, const QString &value)
{
    m_item->service.checkText(field, value);
    m_item->definition.*member = value;
}

QString Task::ApplicationName() const
{
    return m_item->definition.applicationName;
}

void Task::SetApplicationName(const QString &name)
{
    setText(TaskService::TextField::ApplicationName, &TaskDefinition::applicationName, name);
}

QString Task::CommandLine() const
{
    return m_item->definition.parameters;
}

void Task::setCommandLine(const QString &commandLine)
{
    setText(TaskService::TextField::Parameters, &TaskDefinition::parameters, commandLine);
}

QString Task::Comment() const
{
    return m_item->definition.comment;
}

void Task::SetComment(const QString &comment)
{
    setText(TaskService::TextField::Comment, &TaskDefinition::comment, comment);
}

QString Task::Creator() const
{
    return m_item->definition.creator;
}

void Task::SetCreator(const QString &creator)
{
    setText(TaskService::TextField::Creator, &TaskDefinition::creator, creator);
}

bool Task::openEditor(QObject *owner)
{
    if (!m_item->editor)
        throw TaskErrors::refused(AppError::tr("There is no property sheet to show the task in."));
    return m_item->editor->editTask(*this, owner);
}

bool Task::Edit(QObject *owner)
{
    return openEditor(owner);
}

int Task::ErrorRetryCount() const
{
    return m_item->definition.errorRetryCount;
}

void Task::SetErrorRetryCount(int count)
{
    m_item->definition.errorRetryCount = toWord(count);
}

int Task::ErrorRetryInterval() const
{
    return m_item->definition.errorRetryInterval;
}

void Task::SetErrorRetryInterval(int minutes)
{
    m_item->definition.errorRetryInterval = toWord(minutes);
}

qint32 Task::ExitCode() const
{
    return m_item->service.runState(m_item->name).exitCode;
}

QString Task::filename() const
{
    return m_item->service.fileName(m_item->name);
}

qint32 Task::Flags() const
{
    return m_item->definition.flags;
}

void Task::SetFlags(qint32 flags)
{
    m_item->definition.flags = flags;
}

QString Task::GetAccountInfo() const
{
    return m_item->definition.account;
}

void Task::GetIdleWait(int &idleMinutes, int &deadlineMinutes) const
{
    idleMinutes = m_item->definition.idleMinutes;
    deadlineMinutes = m_item->definition.deadlineMinutes;
}

void Task::SetIdleWait(int idleMinutes, int deadlineMinutes)
{
    const qint16 idle = toWord(idleMinutes);
    const qint16 deadline = toWord(deadlineMinutes);
    m_item->definition.idleMinutes = idle;
    m_item->definition.deadlineMinutes = deadline;
}

QDateTime Task::LastRunTime() const
{
    return m_item->service.runState(m_item->name).lastRun;
}

qint32 Task::MaxRunTime() const
{
    return m_item->definition.maxRunTime;
}

void Task::SetMaxRunTime(qint32 milliseconds)
{
    m_item->definition.maxRunTime = milliseconds;
}

QDateTime Task::NextRunTime() const
{
    return m_item->service.runState(m_item->name).nextRun;
}

qint32 Task::Priority() const
{
    return m_item->definition.priority;
}

void Task::SetPriority(qint32 priorityClass)
{
    switch (priorityClass) {
    case TaskPriority::Idle:
    case TaskPriority::BelowNormal:
    case TaskPriority::Normal:
    case TaskPriority::AboveNormal:
    case TaskPriority::High:
    case TaskPriority::Realtime:
        m_item->definition.priority = priorityClass;
        return;
    default:
        throw AppError::invalidArgument();
    }
}

void Task::Run()
{
    m_item->service.run(m_item->name);
}

void Task::Save(const QString &fileName)
{
    for (const std::shared_ptr<Trigger> &trigger : m_triggers->NewEnum())
        trigger->Update();
    m_item->service.save(fileName.isEmpty() ? m_item->name : fileName, m_item->definition);
}

void Task::SetAccountInfo(const QString &account, const std::optional<QString> &password)
{
    if (password && !password->isEmpty())
        throw TaskErrors::refused(
            AppError::tr("Scheduled recordings run as their owner; no password is kept."));
    setText(TaskService::TextField::Account, &TaskDefinition::account, account);
}

bool Task::ShowProperties(QObject *owner)
{
    return openEditor(owner);
}

qint32 Task::Status() const
{
    return m_item->service.runState(m_item->name).status;
}

QString Task::StatusText() const
{
    return TaskStatus::text(Status());
}

void Task::Terminate()
{
    m_item->service.terminate(m_item->name);
}

QString Task::WorkingDirectory() const
{
    return m_item->definition.workingDirectory;
}

void Task::SetWorkingDirectory(const QString &folder)
{
    setText(TaskService::TextField::WorkingDirectory, &TaskDefinition::workingDirectory, folder);
}

bool Task::showsWindow() const
{
    return m_item->service.showsWindow(m_item->definition);
}
