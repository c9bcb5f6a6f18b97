#pragma once

#include "schedule/triggerrecord.h"

#include <QDate>
#include <QStringList>

#include <optional>

// The OnCalendar= expressions that start a task at the trigger's times from
// today on, for the triggers a calendar can express: once; every day; every
// week on chosen days; chosen days of chosen months; a chosen week's days of
// chosen months. A begin day after today, and the end day of a trigger that
// has one, bound a repeating trigger: its calendars then name the years,
// months and days in between, so the timer's next run is the real one.
// Every N days or weeks runs on the calendar of every day or week, and
// intervalCondition skips the days between. Empty for the rest (idle,
// system start, log-on, disabled triggers, values no calendar holds) and for
// a trigger whose end day has passed.
QStringList onCalendarsFor(const TriggerRecord &record, QDate today);

// For a trigger that repeats every N > 1 days or weeks: a command line (the
// program first) whose exit status is 0 on the days it runs, counted from its
// begin day (weeks from the Sunday that starts the begin day's week).
// Nothing for every other trigger.
std::optional<QStringList> intervalCondition(const TriggerRecord &record);
