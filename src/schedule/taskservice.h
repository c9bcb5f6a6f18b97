#pragma once

#include "schedule/triggerrecord.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

class QObject;
class Task;

// Work-item flags a task carries.
namespace TaskFlags {
inline constexpr qint32 Interactive = 0x1;
inline constexpr qint32 DeleteWhenDone = 0x2;
inline constexpr qint32 Disabled = 0x4;
inline constexpr qint32 RunIfConnectedToInternet = 0x400;
inline constexpr qint32 RunOnlyIfLoggedOn = 0x2000;
} // namespace TaskFlags

// Priority classes a task may run with.
namespace TaskPriority {
inline constexpr qint32 Idle = 0x40;
inline constexpr qint32 Normal = 0x20;
inline constexpr qint32 High = 0x80;
inline constexpr qint32 Realtime = 0x100;
inline constexpr qint32 BelowNormal = 0x4000;
inline constexpr qint32 AboveNormal = 0x8000;
} // namespace TaskPriority

// What the task store keeps of one task.
struct TaskDefinition
{
    // A task runs for at most three days unless told otherwise; -1 means no limit.
    static constexpr qint32 defaultMaxRunTime = 72 * 60 * 60 * 1000;

    QString applicationName;
    QString parameters; // the command line
    QString comment;
    QString creator;
    QString workingDirectory;
    QString account;
    qint32 flags = 0;
    qint16 errorRetryCount = 0;
    qint16 errorRetryInterval = 0;
    qint16 idleMinutes = 0;
    qint16 deadlineMinutes = 0;
    qint32 maxRunTime = defaultMaxRunTime; // milliseconds
    qint32 priority = TaskPriority::Normal;
    QList<TriggerRecord> triggers;

    bool operator==(const TaskDefinition &other) const = default;
};

// Status codes a task reports.
namespace TaskStatus {
inline constexpr qint32 Ready = 0x41300;
inline constexpr qint32 Running = 0x41301;
inline constexpr qint32 Disabled = 0x41302;
inline constexpr qint32 HasNotRun = 0x41303;
inline constexpr qint32 NoMoreRuns = 0x41304;
inline constexpr qint32 NotScheduled = 0x41305;
// The text for a status code; empty for a code that has none.
QString text(qint32 status);
} // namespace TaskStatus

// What the service manager knows about a task's runs. Everything is empty or
// zero when it cannot be asked.
struct TaskRunState
{
    qint32 status = 0;
    qint32 exitCode = 0;
    QDateTime lastRun; // null when it never ran
    QDateTime nextRun; // null when no run is due
};

// The platform's scheduler as the Schedule, Task, Triggers and Trigger
// classes use it. Tasks are read into and saved from a TaskDefinition; every
// failure reaches the caller as an AppError.
class TaskService
{
public:
    enum class TextField
    {
        ApplicationName,
        Parameters,
        Comment,
        Creator,
        WorkingDirectory,
        Account,
    };

    virtual ~TaskService() = default;

    virtual QString TargetComputer() const = 0;
    virtual void setTargetComputer(const QString &computer) = 0;

    // The names of the tasks in the store, in the store's order.
    virtual QStringList taskNames() = 0;
    // A fresh, unsaved definition for a new task; fails for a name the store
    // cannot take or already holds.
    virtual TaskDefinition newWorkItem(const QString &name) = 0;
    // Reads a stored task.
    virtual TaskDefinition activate(const QString &name) = 0;
    virtual void save(const QString &name, const TaskDefinition &definition) = 0;
    virtual void remove(const QString &name) = 0;
    // Refuses a value the store could not keep exactly.
    virtual void checkText(TextField field, const QString &value) const = 0;
    // Where the task is stored.
    virtual QString fileName(const QString &name) const = 0;

    // Whether the service that starts tasks can be reached at all, as far as
    // the store knows without waiting for it.
    virtual bool isRunning() = 0;
    // The run facts as the store last heard them; it never waits for them.
    virtual TaskRunState runState(const QString &name) = 0;
    virtual void run(const QString &name) = 0;
    virtual void terminate(const QString &name) = 0;
    // Whether a started task shows its window to the user; a recording that
    // does not runs unseen until its stop condition.
    virtual bool showsWindow(const TaskDefinition &definition) const = 0;
};

// The task's property sheet: shows the task for editing and returns when it
// is closed, true when the user confirmed it. Changes the user confirms are
// saved to the store.
class TaskEditor
{
public:
    virtual ~TaskEditor() = default;
    virtual bool editTask(Task &task, QObject *owner) = 0;
};
