#include "support/storedtask.h"

#include "schedule/schedule.h"
#include "schedule/task.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"

using namespace Qt::StringLiterals;

const QString StoredTaskTest::commandLine = u"-s ./%STATION%.mp3 -a http://h:8000/x -w Jazz 24 -n -t 60 -v"_s;
const QString StoredTaskTest::taskName = u"Jazz24_2031-01-31_20-15"_s;

void StoredTaskTest::SetUp()
{
    setup.unitFolder = profile.root() + u"/units"_s;
    setup.systemctl = systemctl;
    setup.programPath = u"/opt/tunecatch/tunecatch"_s;
    setup.answerDialog = [this](TaskDialog &dialog) { answer(dialog); };
    parts = std::make_unique<SchedulerParts>(setup);
    Schedule tasks(parts->service());
    const std::shared_ptr<Task> task = tasks.CreateTask(taskName);
    task->SetApplicationName(u"tunecatch"_s);
    task->SetWorkingDirectory(u"/opt/tunecatch/"_s);
    task->setCommandLine(commandLine);
    task->SetComment(u"Recording from Jazz 24"_s);
    const std::shared_ptr<Trigger> trigger = task->Triggers()->Add();
    trigger->setTriggerType(TriggerRecord::Once);
    trigger->setBeginDay(QDate(2031, 1, 31));
    trigger->setStartTime(QTime(21, 15));
    task->Save();
}

std::shared_ptr<Task> StoredTaskTest::stored()
{
    schedule = std::make_unique<Schedule>(parts->service(), &parts->editor());
    schedule->Refresh();
    return schedule->Count() == 1 ? schedule->Job(1) : nullptr;
}
