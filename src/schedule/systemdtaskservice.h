#pragma once

#include "schedule/systemctl.h"
#include "schedule/taskservice.h"
#include "schedule/taskunits.h"

#include <optional>

// The task store over systemd user timers: one task is a `<name>.timer` and
// `<name>.service` pair in the user's unit folder (names escaped as
// systemd-escape does), and those files are the whole store. Saving a task
// writes both files, links the timer into timers.target.wants when it can
// start, and asks the user's service manager to reload and (re)start the
// timer. Without a reachable manager the files are still written; the timers
// start once a manager reads them. Files the program did not write, or that
// were changed by hand, are neither listed nor touched.
class SystemdTaskService : public TaskService
{
public:
    // $XDG_CONFIG_HOME/systemd/user, else ~/.config/systemd/user.
    static QString userUnitFolder();

    SystemdTaskService(QString unitFolder, Systemctl &systemctl);

    QString TargetComputer() const override;
    void setTargetComputer(const QString &computer) override;
    QStringList taskNames() override;
    TaskDefinition newWorkItem(const QString &name) override;
    TaskDefinition activate(const QString &name) override;
    void save(const QString &name, const TaskDefinition &definition) override;
    void remove(const QString &name) override;
    void checkText(TextField field, const QString &value) const override;
    QString fileName(const QString &name) const override;
    bool isRunning() override;
    TaskRunState runState(const QString &name) override;
    void run(const QString &name) override;
    void terminate(const QString &name) override;

    const QString &unitFolder() const { return m_folder; }
    // The unit name for a task, without suffix; fails for a name systemd cannot take.
    static QString unitBase(const QString &name);
    TaskUnits::Paths pathsFor(const QString &name) const;

private:
    std::optional<TaskDefinition> readOwn(const TaskUnits::Paths &paths) const;
    void writeFile(const QString &path, const QByteArray &bytes) const;
    void link(const TaskUnits::Paths &paths) const;
    void unlink(const TaskUnits::Paths &paths) const;
    // systemctl --user, skipped once the manager has been found unreachable.
    Systemctl::Result call(const QStringList &arguments);
    void requireManager();
    // Starts or stops the task's service without waiting for it.
    void controlService(const QString &verb, const QString &name);

    QString m_folder;
    Systemctl &m_systemctl;
    std::optional<bool> m_reachable;
};
