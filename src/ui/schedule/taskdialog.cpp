#include "ui/schedule/taskdialog.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "schedule/task.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

#include <bit>

namespace {

constexpr qint32 allMonths = 0xFFF;
const char *const dayNames[7] = {
    QT_TRANSLATE_NOOP("TaskDialog", "Sun"), QT_TRANSLATE_NOOP("TaskDialog", "Mon"),
    QT_TRANSLATE_NOOP("TaskDialog", "Tue"), QT_TRANSLATE_NOOP("TaskDialog", "Wed"),
    QT_TRANSLATE_NOOP("TaskDialog", "Thu"), QT_TRANSLATE_NOOP("TaskDialog", "Fri"),
    QT_TRANSLATE_NOOP("TaskDialog", "Sat")};

template <typename T> T *named(T *widget, const QString &name, const QString &accessible)
{
    widget->setObjectName(name);
    widget->setAccessibleName(accessible);
    return widget;
}

TaskDialog::Repeat repeatOf(Trigger &trigger)
{
    switch (trigger.TriggerType()) {
    case TriggerRecord::Once:
        return TaskDialog::RepeatOnce;
    case TriggerRecord::Daily:
        return trigger.Daily_Interval() == 1 ? TaskDialog::RepeatDaily : TaskDialog::RepeatUnchanged;
    case TriggerRecord::Weekly:
        return trigger.Weekly_Interval() == 1 ? TaskDialog::RepeatWeekly : TaskDialog::RepeatUnchanged;
    case TriggerRecord::MonthlyDate:
        return (trigger.MonthlyDate_Months() & allMonths) == allMonths &&
                       std::popcount(quint32(trigger.MonthlyDate_Day())) == 1
                   ? TaskDialog::RepeatMonthly
                   : TaskDialog::RepeatUnchanged;
    default:
        return TaskDialog::RepeatUnchanged;
    }
}

} // namespace

TaskDialog::TaskDialog(Task &task, QWidget *parent) : QDialog(parent), m_task(task)
{
    setObjectName(QStringLiteral("TaskDialog"));
    setWindowTitle(tr("%1 - Scheduled recording").arg(AppInfo::title));
    setModal(true);
    buildControls();
    load();
    showRepeat();
    showNotice();
}

QString TaskDialog::pastNotice()
{
    return tr("This start time has already passed: the recording will not start. Choose a later time.");
}

QString TaskDialog::windowlessNotice()
{
    return tr("The recording will run without a window: you will not see it, and only its stop condition "
              "ends it.");
}

void TaskDialog::buildControls()
{
    m_dtStart = named(new QDateEdit, QStringLiteral("dtStart"), tr("Start date"));
    m_dtStart->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    m_dtStart->setCalendarPopup(true);
    m_tmStart = named(new QTimeEdit, QStringLiteral("tmStart"), tr("Start time"));
    m_tmStart->setDisplayFormat(QStringLiteral("HH:mm"));

    m_cboSchedule = named(new QComboBox, QStringLiteral("cboSchedule"), tr("Repeat"));
    m_cboSchedule->addItems({tr("Once"), tr("Every day"), tr("Every week"), tr("Every month")});
    m_weekDays = new QWidget;
    auto *days = new QHBoxLayout(m_weekDays);
    days->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 7; ++i) {
        const QString day = tr(dayNames[i]);
        m_chkDay[i] = named(new QCheckBox(day), QStringLiteral("chkDay") + QString::number(i), day);
        days->addWidget(m_chkDay[i]);
    }
    m_spnMonthDay = named(new QSpinBox, QStringLiteral("spnMonthDay"), tr("Day of the month"));
    m_spnMonthDay->setRange(1, 31);

    m_cboStop = named(new QComboBox, QStringLiteral("cboStop"), tr("Stop"));
    m_cboStop->addItems({tr("No limit"), tr("After minutes"), tr("After megabytes")});
    m_txtStop = named(new QLineEdit, QStringLiteral("txtStop"), tr("Stop after"));
    // The value is one word of the command line: a number, never a blank.
    m_txtStop->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*[.]?[0-9]*")), m_txtStop));
    m_txtStop->setMaximumWidth(90);
    auto *stopRow = new QHBoxLayout;
    stopRow->addWidget(m_cboStop);
    stopRow->addWidget(m_txtStop);
    stopRow->addStretch();

    m_txtComment = named(new QLineEdit, QStringLiteral("txtComment"), tr("Comment"));
    // The comment carries the station's name: leave room to read it whole.
    m_txtComment->setMinimumWidth(m_txtComment->fontMetrics().averageCharWidth() * 48);
    m_lblNotice = new QLabel;
    m_lblNotice->setObjectName(QStringLiteral("lblNotice"));
    m_lblNotice->setWordWrap(true);
    m_lblNotice->setStyleSheet(QStringLiteral("color: #b3261e;"));
    m_lblWindow = new QLabel;
    m_lblWindow->setObjectName(QStringLiteral("lblWindow"));
    m_lblWindow->setWordWrap(true);

    m_form = new QFormLayout;
    QFormLayout *form = m_form;
    form->addRow(tr("Start date:"), m_dtStart);
    form->addRow(tr("Start time:"), m_tmStart);
    form->addRow(tr("Repeat:"), m_cboSchedule);
    form->addRow(tr("On:"), m_weekDays);
    form->addRow(tr("Day of the month:"), m_spnMonthDay);
    form->addRow(tr("Stop:"), stopRow);
    form->addRow(tr("Comment:"), m_txtComment);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOk"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &TaskDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &TaskDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_lblWindow);
    layout->addWidget(m_lblNotice);
    layout->addWidget(buttons);

    connect(m_cboSchedule, &QComboBox::currentIndexChanged, this, &TaskDialog::showRepeat);
    connect(m_cboStop, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_txtStop->setEnabled(index > 0); });
    connect(m_dtStart, &QDateTimeEdit::dateTimeChanged, this, &TaskDialog::showNotice);
    connect(m_tmStart, &QDateTimeEdit::dateTimeChanged, this, &TaskDialog::showNotice);
    connect(m_cboSchedule, &QComboBox::currentIndexChanged, this, &TaskDialog::showNotice);
}

void TaskDialog::load()
{
    const QDateTime now = QDateTime::currentDateTime();
    m_dtStart->setDate(now.date());
    m_tmStart->setTime(QTime(now.time().hour(), now.time().minute()));
    m_spnMonthDay->setValue(now.date().day());
    if (m_task.Triggers()->Count() > 0) {
        const std::shared_ptr<Trigger> trigger = m_task.Triggers()->item(1);
        m_dtStart->setDate(trigger->BeginDay());
        m_tmStart->setTime(trigger->StartTime());
        const Repeat repeat = repeatOf(*trigger);
        if (repeat == RepeatUnchanged)
            m_cboSchedule->addItem(tr("As set: %1").arg(trigger->Text()));
        m_cboSchedule->setCurrentIndex(repeat);
        if (repeat == RepeatWeekly) {
            for (int i = 0; i < 7; ++i)
                m_chkDay[i]->setChecked(trigger->Weekly_DaysOfTheWeek() & (1 << i));
        } else if (repeat == RepeatMonthly) {
            m_spnMonthDay->setValue(std::countr_zero(quint32(trigger->MonthlyDate_Day())) + 1);
        }
    }
    m_loadedStop = readStopCondition(m_task.CommandLine());
    m_cboStop->setCurrentIndex(m_loadedStop.kind + 1);
    m_txtStop->setText(m_loadedStop.value);
    m_txtStop->setEnabled(m_loadedStop.kind != StopCondition::None);
    m_txtComment->setText(m_task.Comment());
    m_lblWindow->setText(m_task.showsWindow() ? QString() : windowlessNotice());
    m_lblWindow->setVisible(!m_task.showsWindow());
}

void TaskDialog::showRepeat()
{
    const int repeat = m_cboSchedule->currentIndex();
    m_form->setRowVisible(m_weekDays, repeat == RepeatWeekly);
    m_form->setRowVisible(m_spnMonthDay, repeat == RepeatMonthly);
}

void TaskDialog::showNotice()
{
    const bool past = m_cboSchedule->currentIndex() == RepeatOnce &&
                      QDateTime(m_dtStart->date(), m_tmStart->time()) < QDateTime::currentDateTime();
    m_lblNotice->setText(past ? pastNotice() : QString());
}

QString TaskDialog::apply()
{
    const int repeat = m_cboSchedule->currentIndex();
    qint32 days = 0;
    for (int i = 0; i < 7; ++i)
        days |= m_chkDay[i]->isChecked() ? 1 << i : 0;
    if (repeat == RepeatWeekly && days == 0)
        return tr("Choose at least one day of the week.");
    const StopCondition stop{StopCondition::Kind(m_cboStop->currentIndex() - 1), m_txtStop->text()};
    if (stop.kind != StopCondition::None && stop.value.isEmpty())
        return tr("Give the number of minutes or megabytes after which the recording stops.");
    try {
        const std::shared_ptr<::Triggers> triggers = m_task.Triggers();
        const std::shared_ptr<Trigger> trigger = triggers->Count() > 0 ? triggers->item(1) : triggers->Add();
        switch (repeat) {
        case RepeatOnce:
            trigger->setTriggerType(TriggerRecord::Once);
            break;
        case RepeatDaily:
            trigger->setTriggerType(TriggerRecord::Daily);
            trigger->setDaily_Interval(1);
            break;
        case RepeatWeekly:
            trigger->setTriggerType(TriggerRecord::Weekly);
            trigger->setWeekly_Interval(1);
            trigger->setWeekly_DaysOfTheWeek(days);
            break;
        case RepeatMonthly:
            trigger->setTriggerType(TriggerRecord::MonthlyDate);
            trigger->setMonthlyDate_Day(qint32(1u << (m_spnMonthDay->value() - 1)));
            trigger->setMonthlyDate_Months(allMonths);
            break;
        default:
            break;
        }
        trigger->setBeginDay(m_dtStart->date());
        trigger->setStartTime(m_tmStart->time());
        if (!(stop == m_loadedStop))
            m_task.setCommandLine(withStopCondition(m_task.CommandLine(), stop));
        m_task.SetComment(m_txtComment->text());
        m_task.Save();
    } catch (const AppError &error) {
        return error.description();
    }
    return {};
}

void TaskDialog::accept()
{
    const QString failure = apply();
    if (!failure.isEmpty()) {
        m_lblNotice->setText(failure);
        return;
    }
    QDialog::accept();
}

TaskDialogEditor::TaskDialogEditor(Answer answer) : m_answer(std::move(answer)) {}

bool TaskDialogEditor::editTask(Task &task, QObject *owner)
{
    TaskDialog dialog(task, qobject_cast<QWidget *>(owner));
    if (!m_answer)
        return dialog.exec() == QDialog::Accepted;
    m_answer(dialog);
    return dialog.result() == QDialog::Accepted;
}
