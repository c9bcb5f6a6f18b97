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

constexpr qint32 AllMonths = 0xFFF;
const char *const DayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

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
        return (trigger.MonthlyDate_Months() & AllMonths) == AllMonths &&
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
    setWindowTitle(AppInfo::title + QStringLiteral(" - Scheduled recording"));
    setModal(true);
    buildControls();
    load();
    showRepeat();
    showNotice();
}

void TaskDialog::buildControls()
{
    dtStart = named(new QDateEdit, QStringLiteral("dtStart"), QStringLiteral("Start date"));
    dtStart->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    dtStart->setCalendarPopup(true);
    tmStart = named(new QTimeEdit, QStringLiteral("tmStart"), QStringLiteral("Start time"));
    tmStart->setDisplayFormat(QStringLiteral("HH:mm"));

    cboSchedule = named(new QComboBox, QStringLiteral("cboSchedule"), QStringLiteral("Repeat"));
    cboSchedule->addItems({QStringLiteral("Once"), QStringLiteral("Every day"), QStringLiteral("Every week"),
                           QStringLiteral("Every month")});
    weekDays = new QWidget;
    auto *days = new QHBoxLayout(weekDays);
    days->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 7; ++i) {
        const QString day = QString::fromLatin1(DayNames[i]);
        chkDay[i] = named(new QCheckBox(day), QStringLiteral("chkDay") + QString::number(i), day);
        days->addWidget(chkDay[i]);
    }
    spnMonthDay = named(new QSpinBox, QStringLiteral("spnMonthDay"), QStringLiteral("Day of the month"));
    spnMonthDay->setRange(1, 31);

    cboStop = named(new QComboBox, QStringLiteral("cboStop"), QStringLiteral("Stop"));
    cboStop->addItems(
        {QStringLiteral("No limit"), QStringLiteral("After minutes"), QStringLiteral("After megabytes")});
    txtStop = named(new QLineEdit, QStringLiteral("txtStop"), QStringLiteral("Stop after"));
    // The value is one word of the command line: a number, never a blank.
    txtStop->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*[.]?[0-9]*")), txtStop));
    txtStop->setMaximumWidth(90);
    auto *stopRow = new QHBoxLayout;
    stopRow->addWidget(cboStop);
    stopRow->addWidget(txtStop);
    stopRow->addStretch();

    txtComment = named(new QLineEdit, QStringLiteral("txtComment"), QStringLiteral("Comment"));
    // The comment carries the station's name: leave room to read it whole.
    txtComment->setMinimumWidth(txtComment->fontMetrics().averageCharWidth() * 48);
    lblNotice = new QLabel;
    lblNotice->setObjectName(QStringLiteral("lblNotice"));
    lblNotice->setWordWrap(true);
    lblNotice->setStyleSheet(QStringLiteral("color: #b3261e;"));

    m_form = new QFormLayout;
    QFormLayout *form = m_form;
    form->addRow(QStringLiteral("Start date:"), dtStart);
    form->addRow(QStringLiteral("Start time:"), tmStart);
    form->addRow(QStringLiteral("Repeat:"), cboSchedule);
    form->addRow(QStringLiteral("On:"), weekDays);
    form->addRow(QStringLiteral("Day of the month:"), spnMonthDay);
    form->addRow(QStringLiteral("Stop:"), stopRow);
    form->addRow(QStringLiteral("Comment:"), txtComment);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOk"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &TaskDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &TaskDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(lblNotice);
    layout->addWidget(buttons);

    connect(cboSchedule, &QComboBox::currentIndexChanged, this, &TaskDialog::showRepeat);
    connect(cboStop, &QComboBox::currentIndexChanged, this,
            [this](int index) { txtStop->setEnabled(index > 0); });
    connect(dtStart, &QDateTimeEdit::dateTimeChanged, this, &TaskDialog::showNotice);
    connect(tmStart, &QDateTimeEdit::dateTimeChanged, this, &TaskDialog::showNotice);
    connect(cboSchedule, &QComboBox::currentIndexChanged, this, &TaskDialog::showNotice);
}

void TaskDialog::load()
{
    const QDateTime now = QDateTime::currentDateTime();
    dtStart->setDate(now.date());
    tmStart->setTime(QTime(now.time().hour(), now.time().minute()));
    spnMonthDay->setValue(now.date().day());
    if (m_task.Triggers()->Count() > 0) {
        const std::shared_ptr<Trigger> trigger = m_task.Triggers()->item(1);
        dtStart->setDate(trigger->BeginDay());
        tmStart->setTime(trigger->StartTime());
        const Repeat repeat = repeatOf(*trigger);
        if (repeat == RepeatUnchanged)
            cboSchedule->addItem(QStringLiteral("As set: ") + trigger->Text());
        cboSchedule->setCurrentIndex(repeat);
        if (repeat == RepeatWeekly) {
            for (int i = 0; i < 7; ++i)
                chkDay[i]->setChecked(trigger->Weekly_DaysOfTheWeek() & (1 << i));
        } else if (repeat == RepeatMonthly) {
            spnMonthDay->setValue(std::countr_zero(quint32(trigger->MonthlyDate_Day())) + 1);
        }
    }
    m_loadedStop = readStopCondition(m_task.CommandLine());
    cboStop->setCurrentIndex(m_loadedStop.kind + 1);
    txtStop->setText(m_loadedStop.value);
    txtStop->setEnabled(m_loadedStop.kind != StopCondition::None);
    txtComment->setText(m_task.Comment());
}

void TaskDialog::showRepeat()
{
    const int repeat = cboSchedule->currentIndex();
    m_form->setRowVisible(weekDays, repeat == RepeatWeekly);
    m_form->setRowVisible(spnMonthDay, repeat == RepeatMonthly);
}

void TaskDialog::showNotice()
{
    const bool past = cboSchedule->currentIndex() == RepeatOnce &&
                      QDateTime(dtStart->date(), tmStart->time()) < QDateTime::currentDateTime();
    lblNotice->setText(past ? PastNotice : QString());
}

QString TaskDialog::apply()
{
    const int repeat = cboSchedule->currentIndex();
    qint32 days = 0;
    for (int i = 0; i < 7; ++i)
        days |= chkDay[i]->isChecked() ? 1 << i : 0;
    if (repeat == RepeatWeekly && days == 0)
        return QStringLiteral("Choose at least one day of the week.");
    const StopCondition stop{StopCondition::Kind(cboStop->currentIndex() - 1), txtStop->text()};
    if (stop.kind != StopCondition::None && stop.value.isEmpty())
        return QStringLiteral("Give the number of minutes or megabytes after which the recording stops.");
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
            trigger->setMonthlyDate_Day(qint32(1u << (spnMonthDay->value() - 1)));
            trigger->setMonthlyDate_Months(AllMonths);
            break;
        default:
            break;
        }
        trigger->setBeginDay(dtStart->date());
        trigger->setStartTime(tmStart->time());
        if (!(stop == m_loadedStop))
            m_task.setCommandLine(withStopCondition(m_task.CommandLine(), stop));
        m_task.SetComment(txtComment->text());
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
        lblNotice->setText(failure);
        return;
    }
    QDialog::accept();
}

TaskDialogEditor::TaskDialogEditor(Answer answer) : m_answer(std::move(answer)) {}

void TaskDialogEditor::editTask(Task &task, QObject *owner)
{
    TaskDialog dialog(task, qobject_cast<QWidget *>(owner));
    if (m_answer)
        m_answer(dialog);
    else
        dialog.exec();
}
