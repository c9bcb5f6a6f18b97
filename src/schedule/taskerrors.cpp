#include "schedule/taskerrors.h"

namespace TaskErrors {

AppError InvalidTriggerType()
{
    return {InvalidTriggerTypeNumber, QStringLiteral("Invalid trigger type")};
}

AppError ServiceNotRunning()
{
    return {ServiceNotRunningNumber, QStringLiteral("No user service manager can be reached.")};
}

AppError SubscriptOutOfRange()
{
    return {AppError::SubscriptOutOfRange, QStringLiteral("Subscript out of range")};
}

AppError TaskExists(const QString &name)
{
    return {FileAlreadyExistsNumber,
            QStringLiteral("A scheduled task named \"%1\" already exists.").arg(name)};
}

AppError TaskNotFound(const QString &name)
{
    return {AppError::FileNotFound, QStringLiteral("There is no scheduled task named \"%1\".").arg(name)};
}

AppError BadTaskName(const QString &name, const QString &why)
{
    return {AppError::InvalidArgument,
            QStringLiteral("\"%1\" cannot name a scheduled task: %2").arg(name, why)};
}

AppError Damaged(const QString &path)
{
    return {BadFileFormatNumber,
            QStringLiteral("The task file is damaged or was changed by hand: %1").arg(path)};
}

AppError NotOurs(const QString &path)
{
    return {AppError::PermissionDenied,
            QStringLiteral("This file was not written by Tunecatch and is left alone: %1").arg(path)};
}

AppError Refused(const QString &why)
{
    return {AppError::InvalidArgument, why};
}

} // namespace TaskErrors
