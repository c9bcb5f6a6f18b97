#include "ui/schedule/frmscheduledtasks.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/prompt.h"
#include "recorder/stopreason.h"
#include "schedule/task.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QString when(const QDateTime &moment, const QString &none)
{
    return moment.isNull() ? none : moment.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

// The columns the manager's answer fills.
void setRunState(QTreeWidgetItem *item, const TaskRunState &state)
{
    item->setText(FrmScheduledTasks::ColumnNextRun, when(state.nextRun, FrmScheduledTasks::tr("None")));
    item->setText(FrmScheduledTasks::ColumnLastRun, when(state.lastRun, FrmScheduledTasks::tr("Never")));
    item->setText(FrmScheduledTasks::ColumnStatus, TaskStatus::text(state.status));
    // The program's exit status says how a finished run ended.
    const bool ended = !state.lastRun.isNull() && state.status != TaskStatus::Running;
    item->setText(FrmScheduledTasks::ColumnLastResult, ended ? ExitStatus::text(state.exitCode) : QString());
}

QPushButton *button(const QString &caption, const QString &name)
{
    auto *made = new QPushButton(caption);
    made->setObjectName(name);
    return made;
}

} // namespace

QString FrmScheduledTasks::askingNotice()
{
    return tr("Asking the user service manager when the recordings run...");
}

QString FrmScheduledTasks::noManagerNotice()
{
    return tr(
        "No user service manager can be reached, so these recordings will not start until a user session "
        "manager is running. Log in to your desktop, or let systemd keep one for you with "
        "\"loginctl enable-linger\".");
}

FrmScheduledTasks::FrmScheduledTasks(const SchedulingSetup &setup, Prompt &prompt, QWidget *parent)
    : QWidget(parent, Qt::Window), m_parts(setup), m_prompt(prompt),
      m_schedule(m_parts.service(), &m_parts.editor())
{
    setObjectName(QStringLiteral("FrmScheduledTasks"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("%1 - Scheduled recordings").arg(AppInfo::title));

    m_lblNotice = new QLabel(noManagerNotice());
    m_lblNotice->setObjectName(QStringLiteral("lblNotice"));
    m_lblNotice->setWordWrap(true);
    m_barBusy = new QProgressBar;
    m_barBusy->setObjectName(QStringLiteral("barBusy"));
    m_barBusy->setAccessibleName(tr("Waiting for the service manager"));
    m_barBusy->setRange(0, 0);
    m_barBusy->setMaximumHeight(m_barBusy->fontMetrics().height());
    m_barBusy->setVisible(m_parts.setup().systemctl->busy());
    connect(m_parts.setup().systemctl.get(), &Systemctl::busyChanged, m_barBusy, &QWidget::setVisible);
    connect(&m_parts.service(), &SystemdTaskService::runStatesKnown, this, &FrmScheduledTasks::showRunStates);

    m_lstTasks = new QTreeWidget;
    m_lstTasks->setObjectName(QStringLiteral("lstTasks"));
    m_lstTasks->setAccessibleName(tr("Scheduled recordings"));
    m_lstTasks->setRootIsDecorated(false);
    m_lstTasks->setHeaderLabels(
        {tr("Name"), tr("Next run"), tr("Last run"), tr("Status"), tr("Last result"), tr("Command line")});
    m_lstTasks->header()->setStretchLastSection(true);
    m_lstTasks->setMinimumSize(760, 220);

    m_cmdEdit = button(tr("Edit..."), QStringLiteral("cmdEdit"));
    m_cmdDelete = button(tr("Delete"), QStringLiteral("cmdDelete"));
    m_cmdRefresh = button(tr("Refresh"), QStringLiteral("cmdRefresh"));
    m_cmdClose = button(tr("Close"), QStringLiteral("cmdClose"));
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {m_cmdEdit, m_cmdDelete, m_cmdRefresh})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(m_cmdClose);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_lblNotice);
    layout->addWidget(m_barBusy);
    layout->addWidget(m_lstTasks);
    layout->addLayout(buttons);

    connect(m_cmdEdit, &QPushButton::clicked, this, &FrmScheduledTasks::cmdEditClick);
    connect(m_lstTasks, &QTreeWidget::itemActivated, this, &FrmScheduledTasks::cmdEditClick);
    connect(m_cmdDelete, &QPushButton::clicked, this, &FrmScheduledTasks::cmdDeleteClick);
    connect(m_cmdRefresh, &QPushButton::clicked, this, &FrmScheduledTasks::refreshList);
    connect(m_cmdClose, &QPushButton::clicked, this, &QWidget::close);

    refreshList();
}

void FrmScheduledTasks::refreshList()
{
    const QString current =
        m_lstTasks->currentItem() ? m_lstTasks->currentItem()->text(ColumnName) : QString();
    m_lstTasks->clear();
    m_schedule.Refresh();
    for (const std::shared_ptr<Task> &task : m_schedule.NewEnum()) {
        auto *item = new QTreeWidgetItem(m_lstTasks, {task->Name(), {}, {}, {}, {}, task->CommandLine()});
        item->setToolTip(ColumnCommandLine, task->CommandLine());
        if (item->text(ColumnName) == current)
            m_lstTasks->setCurrentItem(item);
    }
    if (!m_lstTasks->currentItem() && m_lstTasks->topLevelItemCount() > 0)
        m_lstTasks->setCurrentItem(m_lstTasks->topLevelItem(0));
    for (int column = 0; column < ColumnCommandLine; ++column)
        m_lstTasks->resizeColumnToContents(column);
    m_cmdEdit->setEnabled(m_lstTasks->currentItem());
    m_cmdDelete->setEnabled(m_lstTasks->currentItem());
    showNotice();
    m_parts.service().queryRunStates();
}

void FrmScheduledTasks::showRunStates()
{
    for (int row = 0; row < m_lstTasks->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_lstTasks->topLevelItem(row);
        setRunState(item, m_parts.service().runState(item->text(ColumnName)));
    }
    for (int column = 0; column < ColumnCommandLine; ++column)
        m_lstTasks->resizeColumnToContents(column);
    showNotice();
}

void FrmScheduledTasks::showNotice()
{
    const std::optional<bool> reachable = m_parts.service().managerReachable();
    m_lblNotice->setText(reachable ? noManagerNotice() : askingNotice());
    m_lblNotice->setStyleSheet(reachable ? QStringLiteral("color: #b3261e;") : QString());
    m_lblNotice->setVisible(reachable != true);
}

std::shared_ptr<Task> FrmScheduledTasks::selectedTask() const
{
    const QTreeWidgetItem *item = m_lstTasks->currentItem();
    if (!item)
        return nullptr;
    const QString name = item->text(ColumnName);
    for (const std::shared_ptr<Task> &task : m_schedule.NewEnum()) {
        if (task->Name() == name)
            return task;
    }
    return nullptr;
}

void FrmScheduledTasks::cmdEditClick()
{
    if (const std::shared_ptr<Task> task = selectedTask()) {
        try {
            task->Edit(this);
        } catch (const AppError &error) {
            m_prompt.message(error.description(), AppInfo::title, Prompt::Icon::Warning);
        }
        refreshList();
    }
}

void FrmScheduledTasks::cmdDeleteClick()
{
    const std::shared_ptr<Task> task = selectedTask();
    if (!task || !m_prompt.askYesNo(tr("Delete the scheduled recording \"%1\"?").arg(task->Name()),
                                    AppInfo::title, Prompt::Icon::Question, Prompt::Answer::No))
        return;
    try {
        m_schedule.Delete(task->Name());
    } catch (const AppError &error) {
        m_prompt.message(error.description(), AppInfo::title, Prompt::Icon::Warning);
    }
    refreshList();
}

void FrmScheduledTasks::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
