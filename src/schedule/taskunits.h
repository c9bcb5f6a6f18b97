#pragma once

#include "schedule/taskservice.h"

#include <QByteArray>
#include <QString>

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

QByteArray timerFile(const QString &name, const TaskDefinition &definition);
QByteArray serviceFile(const QString &name, const TaskDefinition &definition, const Paths &paths);
// The task back from its two files; nothing when either is not a file
// written by the program or cannot be read back exactly.
std::optional<TaskDefinition> read(const QByteArray &timer, const QByteArray &service);

// The program the service starts: an application name without a folder is
// taken from the working folder.
QString programPath(const TaskDefinition &definition);
// Whether systemd can start the task at all: a program and a calendar time.
bool startable(const TaskDefinition &definition);
// Whether a task that deletes itself when done has no start left after one
// run, so the service may remove its own files when it stops.
bool runsOnlyOnce(const TaskDefinition &definition);

} // namespace TaskUnits
