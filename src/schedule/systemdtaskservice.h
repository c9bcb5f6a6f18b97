#pragma once

#include "schedule/systemctl.h"
#include "schedule/taskservice.h"
#include "schedule/taskunits.h"

#include <QHash>
#include <QObject>

#include <optional>

// The task store over systemd user timers: one task is a `<name>.timer` and
// `<name>.service` pair in the user's unit folder (names escaped as
// systemd-escape does, and shortened with a hash where systemd's length limit
// asks for it; the full name is kept inside), and those files are the whole
// store. Saving a task writes both files, links the timer into
// timers.target.wants when it can start, and asks the user's service manager
// to reload and (re)start the timer. The manager is never waited for: its
// calls queue on Systemctl, and what it says of the timers (runState) is
// what it last answered. Without a reachable manager the files are still
// written; the timers start once a manager reads them. Files the program did
// not write, or that were changed by hand, are neither listed nor touched.
class SystemdTaskService : public QObject, public TaskService
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SystemdTaskService)

public:
    // $XDG_CONFIG_HOME/systemd/user, else ~/.config/systemd/user.
    static QString userUnitFolder();
    // This session's display variables (DISPLAY, WAYLAND_DISPLAY, XAUTHORITY)
    // as "NAME=value", those that are set.
    static QStringList sessionDisplay();

    // display: what an interactive task's recording is given to open its window on.
    SystemdTaskService(QString unitFolder, Systemctl &systemctl, QStringList display = sessionDisplay(),
                       QObject *parent = nullptr);

    QString TargetComputer() const override;
    void setTargetComputer(const QString &computer) override;
    // Also clears what the manager said, and removes the program's own
    // services whose timer is gone (left by a save that failed half way).
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
    bool showsWindow(const TaskDefinition &definition) const override;

    // Asks the manager for the run facts of the tasks taskNames() listed last;
    // runStatesKnown tells when the answer (or its absence) has come.
    void queryRunStates();
    // Whether the manager answered the last call; nothing before the first
    // answer since the last listing.
    std::optional<bool> managerReachable() const { return m_reachable; }

    const QString &unitFolder() const { return m_folder; }
    // The unit name for a task, without suffix; fails for a name systemd cannot take.
    static QString unitBase(const QString &name);
    TaskUnits::Paths pathsFor(const QString &name) const;

signals:
    void runStatesKnown();

private:
    std::optional<TaskDefinition> readOwn(const TaskUnits::Paths &paths) const;
    void writeFile(const QString &path, const QByteArray &bytes) const;
    void link(const TaskUnits::Paths &paths) const;
    void unlink(const TaskUnits::Paths &paths) const;
    // The task name a timer file stands for; nothing for a file that is no task of ours.
    std::optional<QString> taskNameOf(const QString &base) const;
    void removeOrphans() const;
    // systemctl --user, skipped once the manager has been found unreachable.
    void ask(const QStringList &arguments, const Systemctl::Done &then = {});
    void showRunStates(const QStringList &names, const Systemctl::Result &shown);

    QString m_folder;
    Systemctl &m_systemctl;
    QStringList m_display;
    std::optional<bool> m_reachable;
    QStringList m_listed;
    QHash<QString, TaskRunState> m_runStates;
};
