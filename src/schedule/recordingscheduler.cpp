#include "schedule/recordingscheduler.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/prompt.h"
#include "recorder/launchswitches.h"
#include "schedule/schedule.h"
#include "schedule/task.h"
#include "schedule/trigger.h"
#include "schedule/triggers.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

#ifdef Q_OS_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

namespace {

// After the task exists, every statement that fails is skipped and the next one runs.
template <typename Statement> void tolerate(Statement &&statement)
{
    try {
        statement();
    } catch (const AppError &) {
    }
}

const QString switchMinutes = QStringLiteral("-t");
const QString switchMegabytes = QStringLiteral("-b");
const QString switchMinimised = QStringLiteral("-v");

} // namespace

RecordingScheduler::RecordingScheduler(RecordingInputs inputs, std::function<QDateTime()> now,
                                       QString programPath)
    : m_inputs(std::move(inputs)), m_now(std::move(now)), m_programPath(std::move(programPath))
{
}

QString RecordingScheduler::BuildTaskName() const
{
    const QDateTime now = m_now();
    QString name = taskNameTemplate;
    name.replace(QStringLiteral("%STATION%"), m_inputs.station);
    name.replace(QStringLiteral("%DATE%"), now.toString(QStringLiteral("yyyy-MM-dd")));
    name.replace(QStringLiteral("%TIME%"), now.toString(QStringLiteral("HH-mm")));
    return name;
}

QString RecordingScheduler::BuildScheduleCommandLine() const
{
    QString line = QStringLiteral("-s ") + m_inputs.saveLocation;
    line += QStringLiteral(" -a ") + m_inputs.streamAddress;
    line += QStringLiteral(" -w ") + m_inputs.station;
    if (m_inputs.singleSong)
        line += QStringLiteral(" -n");
    if (m_inputs.hibernate)
        line += QStringLiteral(" -xh");
    else if (m_inputs.shutDown)
        line += QStringLiteral(" -xs");
    if (m_inputs.selectedBreak == 0)
        line += QStringLiteral(" -t ") + m_inputs.breakValues[0];
    else if (m_inputs.selectedBreak == 1)
        line += QStringLiteral(" -b ") + m_inputs.breakValues[1];
    line += QStringLiteral(" -v");
    return line;
}

std::shared_ptr<Task> RecordingScheduler::registerTask(Schedule &schedule, const QString &name) const
{
    std::shared_ptr<Task> task;
    try {
        task = schedule.CreateTask(name);
    } catch (const AppError &) {
        return nullptr;
    }
    const QFileInfo program(m_programPath);
    tolerate([&] { task->SetApplicationName(program.fileName()); });
    tolerate([&] { task->SetCreator(AppInfo::title); });
    tolerate([&] { task->setCommandLine(BuildScheduleCommandLine()); });
    tolerate([&] { task->SetComment(QStringLiteral("Recording from ") + m_inputs.station); });
    tolerate([&] { task->SetWorkingDirectory(program.absolutePath() + u'/'); });
    tolerate([&] { task->SetFlags(recordingTaskFlags); });
    std::shared_ptr<Trigger> trigger;
    tolerate([&] { trigger = task->Triggers()->Add(); });
    if (trigger) {
        tolerate([&] { trigger->setBeginDay(m_now().date()); });
        // 23:30 gives 00:30 of the same day, a time already past: the user
        // sets the real time in the dialog that follows.
        tolerate([&] { trigger->setStartTime(m_now().addSecs(60 * 60).time()); });
        tolerate([&] { trigger->setTriggerType(0); });
    }
    trigger.reset();
    tolerate([&] {
        const QString account = taskAccountName();
        if (account.isEmpty())
            throw AppError::invalidArgument();
        task->SetAccountInfo(account, std::nullopt);
    });
    tolerate([&] { task->Save(); });
    return task;
}

void RecordingScheduler::scheduleRecording(TaskService &service, TaskEditor *editor, QObject *owner,
                                           Prompt &prompt,
                                           const std::function<void()> &openScheduledTasks) const
{
    Schedule schedule(service, editor);
    // The clock may pass a minute while the dialog is open: the name is taken once.
    const QString name = BuildTaskName();
    const std::shared_ptr<Task> task = registerTask(schedule, name);
    if (!task)
        return;
    bool kept = true;
    tolerate([&] { kept = task->ShowProperties(owner); });
    // A user who cancels gets no recording: the task made by this click goes again.
    if (!kept) {
        tolerate([&] { service.remove(name); });
        return;
    }
    if (prompt.askYesNo(QCoreApplication::translate("RecordingScheduler", "Do you wish open Task Scheduler?"),
                        AppInfo::title, Prompt::Icon::Question))
        tolerate(openScheduledTasks);
}

QString taskAccountName()
{
    const QString user = qEnvironmentVariable("USER");
    if (!user.isEmpty())
        return user;
#ifdef Q_OS_UNIX
    if (const passwd *entry = getpwuid(geteuid()))
        return QString::fromLocal8Bit(entry->pw_name);
    return {};
#else
    return qEnvironmentVariable("USERNAME");
#endif
}

StopCondition readStopCondition(const QString &commandLine)
{
    const LaunchSwitches switches = ParseLaunchSwitches(commandLine);
    if (switches.SelectedBreak == 0)
        return {StopCondition::Minutes, switches.Minutes.value_or(QString())};
    if (switches.SelectedBreak == 1)
        return {StopCondition::Megabytes, switches.Megabytes.value_or(QString())};
    return {};
}

QString withStopCondition(const QString &commandLine, const StopCondition &stop)
{
    const QStringList tokens = commandLine.isEmpty() ? QStringList() : commandLine.split(u' ');
    QStringList kept;
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        if (tokens[i] == switchMinutes || tokens[i] == switchMegabytes)
            ++i; // and its value
        else
            kept.append(tokens[i]);
    }
    if (stop.kind != StopCondition::None) {
        const qsizetype at =
            !kept.isEmpty() && kept.last() == switchMinimised ? kept.size() - 1 : kept.size();
        kept.insert(at, stop.value);
        kept.insert(at, stop.kind == StopCondition::Minutes ? switchMinutes : switchMegabytes);
    }
    return kept.join(u' ');
}
