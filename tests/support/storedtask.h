#pragma once

#include "schedule/schedule.h"
#include "support/recordingsystemctl.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/schedule/schedulingsetup.h"

#include <QWidget>

#include <functional>
#include <memory>

class Task;
class TaskDialog;

// A scheduled recording as the Schedule button leaves it, in a unit folder of
// the temporary profile; the task dialog, wherever it opens, is answered by answer.
class StoredTaskTest : public ProfileTest
{
public:
    static const QString commandLine;
    static const QString taskName;
    void SetUp() override;
    // The task as a fresh look at the store finds it.
    std::shared_ptr<Task> stored();
    template <typename T> static T *child(QWidget *parent, const char *name)
    {
        T *widget = parent->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    std::shared_ptr<RecordingSystemctl> systemctl = std::make_shared<RecordingSystemctl>();
    SchedulingSetup setup;
    std::unique_ptr<SchedulerParts> parts;
    std::unique_ptr<Schedule> schedule;
    std::function<void(TaskDialog &)> answer;
    ScriptedPrompt prompt;
};
