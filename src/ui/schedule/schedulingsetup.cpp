#include "ui/schedule/schedulingsetup.h"

#include "ui/schedule/frmscheduledtasks.h"

#include <QCoreApplication>
#include <QWidget>

namespace {

SchedulingSetup completed(SchedulingSetup setup)
{
    if (setup.unitFolder.isEmpty())
        setup.unitFolder = SystemdTaskService::userUnitFolder();
    if (!setup.systemctl)
        setup.systemctl = std::make_shared<ProcessSystemctl>();
    if (setup.programPath.isEmpty())
        setup.programPath = QCoreApplication::applicationFilePath();
    if (!setup.display)
        setup.display = SystemdTaskService::sessionDisplay();
    return setup;
}

} // namespace

SchedulerParts::SchedulerParts(const SchedulingSetup &setup)
    : m_setup(completed(setup)), m_service(m_setup.unitFolder, *m_setup.systemctl, *m_setup.display),
      m_editor(m_setup.answerDialog)
{
}

void scheduleRecording(const RecordingInputs &inputs, const std::function<QDateTime()> &now, Prompt &prompt,
                       const SchedulingSetup &setup, QWidget *owner)
{
    SchedulerParts parts(setup);
    const RecordingScheduler scheduler(inputs, now, parts.setup().programPath);
    scheduler.scheduleRecording(parts.service(), &parts.editor(), owner, prompt, [&] {
        auto *window = new FrmScheduledTasks(parts.setup(), prompt, owner);
        window->show();
    });
}
