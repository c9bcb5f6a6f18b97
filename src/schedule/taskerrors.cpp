#include "schedule/taskerrors.h"

namespace TaskErrors {

AppError invalidTriggerType()
{
    return {InvalidTriggerTypeNumber, AppError::tr("Invalid trigger type")};
}

AppError serviceNotRunning()
{
    return {ServiceNotRunningNumber, AppError::tr("No user service manager can be reached.")};
}

AppError subscriptOutOfRange()
{
    return {AppError::SubscriptOutOfRange, AppError::tr("Subscript out of range")};
}

AppError taskExists(const QString &name)
{
    return {FileAlreadyExistsNumber, AppError::tr("A scheduled task named \"%1\" already exists.").arg(name)};
}

AppError taskNotFound(const QString &name)
{
    return {AppError::FileNotFound, AppError::tr("There is no scheduled task named \"%1\".").arg(name)};
}

AppError badTaskName(const QString &name, const QString &why)
{
    return {AppError::InvalidArgument,
            AppError::tr("\"%1\" cannot name a scheduled task: %2").arg(name, why)};
}

AppError damaged(const QString &path)
{
    return {BadFileFormatNumber,
            AppError::tr("The task file is damaged or was changed by hand: %1").arg(path)};
}

AppError notOurs(const QString &path)
{
    return {AppError::PermissionDenied,
            AppError::tr("This file was not written by Tunecatch and is left alone: %1").arg(path)};
}

AppError refused(const QString &why)
{
    return {AppError::InvalidArgument, why};
}

} // namespace TaskErrors
