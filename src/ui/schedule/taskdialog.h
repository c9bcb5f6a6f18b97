#pragma once

#include "schedule/recordingscheduler.h"
#include "schedule/taskservice.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;
class QTimeEdit;
class Task;

// The program's property sheet for one scheduled recording: when it starts
// and repeats, when the recording stops (as its command line says) and the
// comment. OK writes the changes to the task and saves it; a failure is shown
// in the dialog, which stays open. Cancel or Escape leaves the task as saved.
class TaskDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TaskDialog)

public:
    // Choices of cboSchedule, in order.
    enum Repeat
    {
        RepeatOnce,
        RepeatDaily,
        RepeatWeekly,
        RepeatMonthly,
        // A trigger the dialog cannot show: it is kept as it is.
        RepeatUnchanged,
    };

    // Shown under the inputs while a one-time start lies in the past.
    static QString pastNotice();
    // Shown when the recording will run without a window.
    static QString windowlessNotice();

    TaskDialog(Task &task, QWidget *parent = nullptr);

    void accept() override;

private:
    void buildControls();
    void load();
    void showRepeat();
    void showNotice();
    // Writes the controls to the task and saves it; an empty text on success.
    QString apply();

    Task &m_task;
    StopCondition m_loadedStop;

    QFormLayout *m_form = nullptr;

    QDateEdit *m_dtStart = nullptr;
    QTimeEdit *m_tmStart = nullptr;
    QComboBox *m_cboSchedule = nullptr;
    QWidget *m_weekDays = nullptr;
    QCheckBox *m_chkDay[7] = {};
    QSpinBox *m_spnMonthDay = nullptr;
    QComboBox *m_cboStop = nullptr;
    QLineEdit *m_txtStop = nullptr;
    QLineEdit *m_txtComment = nullptr;
    QLabel *m_lblNotice = nullptr;
    QLabel *m_lblWindow = nullptr;
};

// Shows tasks in the TaskDialog, modal over their owner.
class TaskDialogEditor : public TaskEditor
{
public:
    // Plays the user while the dialog is open, instead of a modal loop;
    // tests answer the dialog with it.
    using Answer = std::function<void(TaskDialog &)>;

    explicit TaskDialogEditor(Answer answer = {});

    bool editTask(Task &task, QObject *owner) override;

private:
    Answer m_answer;
};
