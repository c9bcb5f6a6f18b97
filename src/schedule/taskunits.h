#pragma once

#include "schedule/taskservice.h"

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>

// One task as a pair of systemd user units: the timer starts the service at
// the trigger times, the service runs the program. Each setting goes where
// systemd reads it (ExecStart=, WorkingDirectory=, Description=,
// OnCalendar=, RuntimeMaxSec=, Nice=) and keeps its exact value in an
// X-Tunecatch- key where systemd's setting cannot carry it; what systemd has
// no setting for lives in X-Tunecatch- keys only.
namespace TaskUnits {

// Where the pair lives and how the units name each other.
struct Paths
{
    QString timer;
    QString service;
    QString wantsLink; // the timer's enabling link in timers.target.wants
};

// What the files are written for besides the task itself: the day the
// calendars count from, and the session's display variables ("DISPLAY=:0",
// ...) that an interactive task's recording gets, so it opens its window there.
struct Context
{
    QDate today;
    QStringList display;
};

QByteArray timerFile(const QString &name, const TaskDefinition &definition, const Context &context);
QByteArray serviceFile(const QString &name, const TaskDefinition &definition, const Paths &paths,
                       const Context &context);
// The task back from its two files; nothing when either is not a file
// written by the program or cannot be read back exactly.
std::optional<TaskDefinition> read(const QByteArray &timer, const QByteArray &service);
// The task's full name as kept in either of its files (the file's own name
// may be a shortened form); nothing when the file holds none.
std::optional<QString> storedName(const QByteArray &unitFile);

// The program the service starts: an application name without a folder is
// taken from the working folder.
QString programPath(const TaskDefinition &definition);
// Whether systemd can start the task at all: a program and a calendar time.
bool startable(const TaskDefinition &definition, QDate today);
// Whether a task that deletes itself when done has no start left after one
// run, so the service may remove its own files when it stops.
bool runsOnlyOnce(const TaskDefinition &definition, QDate today);
// Why the units could not run the task as it is set (values no scheduler
// takes, a repetition within a day, different random delays, an every-N-days
// trigger beside other starts); empty when they can.
QString refusal(const TaskDefinition &definition, QDate today);
// Whether the recording opens a window: an interactive task, and a display
// to open it on.
bool showsWindow(const TaskDefinition &definition, const QStringList &display);

} // namespace TaskUnits
