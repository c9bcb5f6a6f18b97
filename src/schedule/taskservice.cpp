#include "schedule/taskservice.h"

#include <QCoreApplication>

QString TaskStatus::text(qint32 status)
{
    switch (status) {
    case Ready:
        return QCoreApplication::translate("TaskStatus", "Ready: waits for its next start.");
    case Running:
        return QCoreApplication::translate("TaskStatus", "Running.");
    case Disabled:
        return QCoreApplication::translate("TaskStatus",
                                           "Disabled: it will not start at its scheduled times.");
    case HasNotRun:
        return QCoreApplication::translate("TaskStatus", "Waiting: it has not run yet.");
    case NoMoreRuns:
        return QCoreApplication::translate("TaskStatus", "Done: no more starts are scheduled.");
    case NotScheduled:
        return QCoreApplication::translate("TaskStatus",
                                           "Not scheduled: none of its start times lies ahead.");
    default:
        return {};
    }
}
