#include "recorder/stopreason.h"

#include <QCoreApplication>

QString StopReason::summary() const
{
    if (!text.isEmpty())
        return text;
    if (kind == Kind::LimitReached)
        return QCoreApplication::translate("StopReason", "The recording reached its limit.");
    return QCoreApplication::translate("StopReason", "The recording was stopped.");
}

int ExitStatus::of(StopReason::Kind kind)
{
    switch (kind) {
    case StopReason::Kind::Stopped:
    case StopReason::Kind::LimitReached:
        return Done;
    case StopReason::Kind::BadSwitches:
    case StopReason::Kind::BadAddress:
        return BadSwitches;
    case StopReason::Kind::Unreachable:
    case StopReason::Kind::StreamFailed:
        return Unreachable;
    case StopReason::Kind::OutputFailed:
        return OutputFailed;
    case StopReason::Kind::Dropped:
        return Dropped;
    }
    return Done;
}

QString ExitStatus::text(int status)
{
    switch (status) {
    case Done:
        return QCoreApplication::translate("ExitStatus", "Recorded");
    case BadSwitches:
        return QCoreApplication::translate("ExitStatus", "Bad switches or address");
    case Unreachable:
        return QCoreApplication::translate("ExitStatus", "Station unreachable or refused");
    case OutputFailed:
        return QCoreApplication::translate("ExitStatus", "Files could not be written");
    case Dropped:
        return QCoreApplication::translate("ExitStatus", "Station dropped and did not come back");
    default:
        return QCoreApplication::translate("ExitStatus", "Ended with status %1").arg(status);
    }
}
