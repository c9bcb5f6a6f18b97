#include "ui/schedule/frmscheduledtasks.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/prompt.h"
#include "schedule/task.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QString when(const QDateTime &moment, const QString &none)
{
    return moment.isNull() ? none : moment.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

QPushButton *button(const QString &caption, const QString &name)
{
    auto *made = new QPushButton(caption);
    made->setObjectName(name);
    return made;
}

} // namespace

FrmScheduledTasks::FrmScheduledTasks(const SchedulingSetup &setup, Prompt &prompt, QWidget *parent)
    : QWidget(parent, Qt::Window), m_parts(setup), m_prompt(prompt),
      m_schedule(m_parts.service(), &m_parts.editor())
{
    setObjectName(QStringLiteral("FrmScheduledTasks"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(AppInfo::title + QStringLiteral(" - Scheduled recordings"));

    lblNotice = new QLabel(NoManagerNotice);
    lblNotice->setObjectName(QStringLiteral("lblNotice"));
    lblNotice->setWordWrap(true);
    lblNotice->setStyleSheet(QStringLiteral("color: #b3261e;"));

    lstTasks = new QTreeWidget;
    lstTasks->setObjectName(QStringLiteral("lstTasks"));
    lstTasks->setAccessibleName(QStringLiteral("Scheduled recordings"));
    lstTasks->setRootIsDecorated(false);
    lstTasks->setHeaderLabels({QStringLiteral("Name"), QStringLiteral("Next run"), QStringLiteral("Last run"),
                               QStringLiteral("Status"), QStringLiteral("Command line")});
    lstTasks->header()->setStretchLastSection(true);
    lstTasks->setMinimumSize(760, 220);

    cmdEdit = button(QStringLiteral("Edit..."), QStringLiteral("cmdEdit"));
    cmdDelete = button(QStringLiteral("Delete"), QStringLiteral("cmdDelete"));
    cmdRefresh = button(QStringLiteral("Refresh"), QStringLiteral("cmdRefresh"));
    cmdClose = button(QStringLiteral("Close"), QStringLiteral("cmdClose"));
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {cmdEdit, cmdDelete, cmdRefresh})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(cmdClose);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblNotice);
    layout->addWidget(lstTasks);
    layout->addLayout(buttons);

    connect(cmdEdit, &QPushButton::clicked, this, &FrmScheduledTasks::cmdEdit_Click);
    connect(lstTasks, &QTreeWidget::itemActivated, this, &FrmScheduledTasks::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &FrmScheduledTasks::cmdDelete_Click);
    connect(cmdRefresh, &QPushButton::clicked, this, &FrmScheduledTasks::RefreshList);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);

    RefreshList();
}

void FrmScheduledTasks::RefreshList()
{
    const QString current = lstTasks->currentItem() ? lstTasks->currentItem()->text(ColumnName) : QString();
    lstTasks->clear();
    m_schedule.Refresh();
    SystemdTaskService &service = m_parts.service();
    lblNotice->setVisible(!service.isRunning());
    for (const std::shared_ptr<Task> &task : m_schedule.NewEnum()) {
        const TaskRunState state = service.runState(task->Name());
        auto *item = new QTreeWidgetItem(lstTasks, {task->Name(), when(state.nextRun, QStringLiteral("None")),
                                                    when(state.lastRun, QStringLiteral("Never")),
                                                    TaskStatus::Text(state.Status), task->CommandLine()});
        item->setToolTip(ColumnCommandLine, task->CommandLine());
        if (item->text(ColumnName) == current)
            lstTasks->setCurrentItem(item);
    }
    if (!lstTasks->currentItem() && lstTasks->topLevelItemCount() > 0)
        lstTasks->setCurrentItem(lstTasks->topLevelItem(0));
    for (int column = 0; column < ColumnCommandLine; ++column)
        lstTasks->resizeColumnToContents(column);
    cmdEdit->setEnabled(lstTasks->currentItem());
    cmdDelete->setEnabled(lstTasks->currentItem());
}

std::shared_ptr<Task> FrmScheduledTasks::selectedTask() const
{
    const QTreeWidgetItem *item = lstTasks->currentItem();
    if (!item)
        return nullptr;
    const QString name = item->text(ColumnName);
    for (const std::shared_ptr<Task> &task : m_schedule.NewEnum()) {
        if (task->Name() == name)
            return task;
    }
    return nullptr;
}

void FrmScheduledTasks::cmdEdit_Click()
{
    if (const std::shared_ptr<Task> task = selectedTask()) {
        try {
            task->Edit(this);
        } catch (const AppError &error) {
            m_prompt.message(error.description(), AppInfo::title, Prompt::Icon::Warning);
        }
        RefreshList();
    }
}

void FrmScheduledTasks::cmdDelete_Click()
{
    const std::shared_ptr<Task> task = selectedTask();
    if (!task ||
        !m_prompt.askYesNo(QStringLiteral("Delete the scheduled recording \"%1\"?").arg(task->Name()),
                           AppInfo::title, Prompt::Icon::Question))
        return;
    try {
        m_schedule.Delete(task->Name());
    } catch (const AppError &error) {
        m_prompt.message(error.description(), AppInfo::title, Prompt::Icon::Warning);
    }
    RefreshList();
}

void FrmScheduledTasks::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
