#include "schedule/taskservice.h"

QString TaskStatus::Text(qint32 status)
{
    switch (status) {
    case Ready:
        return QStringLiteral("Ready: waits for its next start.");
    case Running:
        return QStringLiteral("Running.");
    case Disabled:
        return QStringLiteral("Disabled: it will not start at its scheduled times.");
    case HasNotRun:
        return QStringLiteral("Waiting: it has not run yet.");
    case NoMoreRuns:
        return QStringLiteral("Done: no more starts are scheduled.");
    case NotScheduled:
        return QStringLiteral("Not scheduled: none of its start times lies ahead.");
    default:
        return {};
    }
}
