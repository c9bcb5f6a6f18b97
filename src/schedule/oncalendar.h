#pragma once

#include "schedule/triggerrecord.h"

#include <QString>

#include <optional>

// The OnCalendar= expression that starts a task at the trigger's times, for
// the triggers a calendar can express: once; every day; every week on chosen
// days; chosen days of chosen months; a chosen week's days of chosen months.
// Nothing for the rest (intervals of more than one day or week, idle, system
// start, log-on, disabled triggers). Repeating triggers start at once: a
// calendar has no first day.
std::optional<QString> onCalendarFor(const TriggerRecord &record);
