#include "schedule/taskerrors.h"

namespace TaskErrors {

AppError invalidTriggerType()
{
    return {InvalidTriggerTypeNumber, QStringLiteral("Invalid trigger type")};
}

AppError serviceNotRunning()
{
    return {ServiceNotRunningNumber, QStringLiteral("No user service manager can be reached.")};
}

AppError subscriptOutOfRange()
{
    return {AppError::SubscriptOutOfRange, QStringLiteral("Subscript out of range")};
}

AppError taskExists(const QString &name)
{
    return {FileAlreadyExistsNumber,
            QStringLiteral("A scheduled task named \"%1\" already exists.").arg(name)};
}

AppError taskNotFound(const QString &name)
{
    return {AppError::FileNotFound, QStringLiteral("There is no scheduled task named \"%1\".").arg(name)};
}

AppError badTaskName(const QString &name, const QString &why)
{
    return {AppError::InvalidArgument,
            QStringLiteral("\"%1\" cannot name a scheduled task: %2").arg(name, why)};
}

AppError damaged(const QString &path)
{
    return {BadFileFormatNumber,
            QStringLiteral("The task file is damaged or was changed by hand: %1").arg(path)};
}

AppError notOurs(const QString &path)
{
    return {AppError::PermissionDenied,
            QStringLiteral("This file was not written by Tunecatch and is left alone: %1").arg(path)};
}

AppError refused(const QString &why)
{
    return {AppError::InvalidArgument, why};
}

} // namespace TaskErrors
