#pragma once

#include "schedule/taskservice.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <optional>

class Triggers;
struct WorkItem;

// One scheduled task. Properties read and change the task as it stands in
// memory; Save writes it to the store. Run-time facts (status, exit code,
// last and next run) are read from the service at every read, as the service
// last heard them. Failures of the store or the service reach the caller as
// they are.
class Task
{
public:
    ~Task();
    Task(const Task &) = delete;
    Task &operator=(const Task &) = delete;

    QString ApplicationName() const;
    void SetApplicationName(const QString &name);
    QString CommandLine() const;
    void setCommandLine(const QString &commandLine);
    QString Comment() const;
    void SetComment(const QString &comment);
    QString Creator() const;
    void SetCreator(const QString &creator);
    // Opens the task's property sheet over the owner and returns when it
    // closes: true when the user confirmed it.
    bool Edit(QObject *owner);
    int ErrorRetryCount() const;
    void SetErrorRetryCount(int count);
    int ErrorRetryInterval() const;
    void SetErrorRetryInterval(int minutes);
    qint32 ExitCode() const;
    QString filename() const;
    qint32 Flags() const;
    void SetFlags(qint32 flags);
    QString GetAccountInfo() const;
    void GetIdleWait(int &idleMinutes, int &deadlineMinutes) const;
    void SetIdleWait(int idleMinutes, int deadlineMinutes);
    // A null date-time when the task never ran.
    QDateTime LastRunTime() const;
    // Milliseconds; -1 lets the task run without limit.
    qint32 MaxRunTime() const;
    void SetMaxRunTime(qint32 milliseconds);
    // The name the task was found under by Schedule::Refresh; empty otherwise.
    QString Name() const { return m_name; }
    // A null date-time when no run is due.
    QDateTime NextRunTime() const;
    qint32 Priority() const;
    void SetPriority(qint32 priorityClass);
    void Run();
    // Updates every trigger, then writes the task to the store: under its own
    // name, or as a copy under fileName when one is given.
    void Save(const QString &fileName = {});
    // User timers run as their owner, so no password is ever kept: a password
    // other than a null or empty one is refused.
    void SetAccountInfo(const QString &account, const std::optional<QString> &password);
    bool ShowProperties(QObject *owner);
    qint32 Status() const;
    QString StatusText() const;
    void Terminate();
    std::shared_ptr<::Triggers> Triggers() const { return m_triggers; }
    QString WorkingDirectory() const;
    void SetWorkingDirectory(const QString &folder);
    // Whether the task, when started, shows its window to the user.
    bool showsWindow() const;

private:
    friend class Schedule;
    explicit Task(std::shared_ptr<WorkItem> item);

    void setText(TaskService::TextField field, QString TaskDefinition::*member, const QString &value);
    bool openEditor(QObject *owner);

    std::shared_ptr<WorkItem> m_item;
    std::shared_ptr<::Triggers> m_triggers;
    QString m_name;
};
