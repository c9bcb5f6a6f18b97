#pragma once

#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>

class Prompt;
class QObject;
class Schedule;
class Task;
class TaskEditor;
class TaskService;

// What the recorder window holds when Schedule is pressed.
struct RecordingInputs
{
    QString station;       // LblStation
    QString saveLocation;  // txtSave
    QString streamAddress; // txtStream
    bool singleSong = false;
    bool hibernate = false;
    bool shutDown = false;
    int selectedBreak = -1; // the selected optBreak, -1 for neither
    QString breakValues[2]; // txtBreak0 (minutes), txtBreak1 (megabytes)
};

// Turns the recording the window is set up for into a one-shot task that
// starts this program again an hour from now with a command line repeating
// those settings, then lets the user set the real time in the task dialog.
class RecordingScheduler
{
public:
    static inline const QString taskNameTemplate = QStringLiteral("%STATION%_%DATE%_%TIME%");
    // Interactive, deleted when done, only with a network, only while the user is logged on.
    static constexpr qint32 recordingTaskFlags = 9219;

    RecordingScheduler(RecordingInputs inputs, std::function<QDateTime()> now, QString programPath);

    QString BuildTaskName() const;
    QString BuildScheduleCommandLine() const;

    // The whole click. Ends silently when the task cannot be created (a task
    // of that name exists); after that every failing step is skipped. The
    // task dialog opens over the owner: Cancel there deletes the task just
    // made and ends the click; after OK a Yes to the question calls
    // openScheduledTasks.
    void scheduleRecording(TaskService &service, TaskEditor *editor, QObject *owner, Prompt &prompt,
                           const std::function<void()> &openScheduledTasks) const;
    // Creating and saving the task under name: the part before the dialog.
    // Null when creation failed.
    std::shared_ptr<Task> registerTask(Schedule &schedule, const QString &name) const;

private:
    RecordingInputs m_inputs;
    std::function<QDateTime()> m_now;
    QString m_programPath;
};

// The account a task is registered for: USER, else the process's login name.
QString taskAccountName();

// The stop condition a recording command line carries.
struct StopCondition
{
    enum Kind
    {
        None = -1,
        Minutes = 0,   // "-t"
        Megabytes = 1, // "-b"
    };
    Kind kind = None;
    QString value;

    bool operator==(const StopCondition &other) const = default;
};

// The later of "-t" and "-b" wins, as when the recorder reads the line.
StopCondition readStopCondition(const QString &commandLine);
// Drops every "-t" and "-b" with its value and puts the new condition where
// BuildScheduleCommandLine puts it: before a final "-v", else at the end.
QString withStopCondition(const QString &commandLine, const StopCondition &stop);
