#pragma once

#include "schedule/schedule.h"
#include "ui/schedule/schedulingsetup.h"

#include <QWidget>

class Prompt;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

// The program's list of its scheduled recordings: name, next and last run,
// status, how the last run ended and command line, with Edit (the task dialog)
// and Delete. The tasks show at once; their runs and status follow when the
// user service manager answers, which the window waits for without freezing.
// It says so when no manager can be reached, since then nothing starts.
class FrmScheduledTasks : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmScheduledTasks)

public:
    enum Column
    {
        ColumnName,
        ColumnNextRun,
        ColumnLastRun,
        ColumnStatus,
        ColumnLastResult,
        ColumnCommandLine,
    };

    // Shown above the list while no user service manager runs the timers.
    static QString noManagerNotice();
    // Shown above the list while the manager has not answered yet.
    static QString askingNotice();

    FrmScheduledTasks(const SchedulingSetup &setup, Prompt &prompt, QWidget *parent = nullptr);

    void refreshList();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showRunStates();
    void showNotice();
    void cmdEditClick();
    void cmdDeleteClick();
    std::shared_ptr<Task> selectedTask() const;

    SchedulerParts m_parts;
    Prompt &m_prompt;
    Schedule m_schedule;

    QLabel *m_lblNotice = nullptr;
    QProgressBar *m_barBusy = nullptr;
    QTreeWidget *m_lstTasks = nullptr;
    QPushButton *m_cmdEdit = nullptr;
    QPushButton *m_cmdDelete = nullptr;
    QPushButton *m_cmdRefresh = nullptr;
    QPushButton *m_cmdClose = nullptr;
};
