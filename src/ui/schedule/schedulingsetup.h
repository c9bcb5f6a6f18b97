#pragma once

#include "schedule/recordingscheduler.h"
#include "schedule/systemctl.h"
#include "schedule/systemdtaskservice.h"
#include "ui/schedule/taskdialog.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class Prompt;
class QWidget;

// Where scheduled recordings live and how they are started; every part left
// empty is the real one. Tests point it at a temporary folder, a recorder of
// systemctl calls and a scripted answer to the task dialog.
struct SchedulingSetup
{
    QString unitFolder;                    // empty: the user's unit folder
    std::shared_ptr<Systemctl> systemctl;  // null: `systemctl --user`
    TaskDialogEditor::Answer answerDialog; // null: the dialog waits for the user
    QString programPath;                   // empty: this program
    std::optional<QStringList> display;    // nothing: this session's display variables
};

// The scheduler parts a window works with, made from a setup.
class SchedulerParts
{
public:
    explicit SchedulerParts(const SchedulingSetup &setup);
    SchedulerParts(const SchedulerParts &) = delete;
    SchedulerParts &operator=(const SchedulerParts &) = delete;

    SystemdTaskService &service() { return m_service; }
    TaskDialogEditor &editor() { return m_editor; }
    const SchedulingSetup &setup() const { return m_setup; }

private:
    SchedulingSetup m_setup;
    SystemdTaskService m_service;
    TaskDialogEditor m_editor;
};

// The Schedule button: registers the recording as a task, opens the task
// dialog over the owner and, on Yes to the question, the scheduled recordings
// window.
void scheduleRecording(const RecordingInputs &inputs, const std::function<QDateTime()> &now, Prompt &prompt,
                       const SchedulingSetup &setup, QWidget *owner);
