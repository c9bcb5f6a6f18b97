#pragma once

#include "base/apperror.h"

#include <QString>

// The failures the scheduler classes and their stores report.
namespace TaskErrors {

// A type-specific trigger property used on a trigger of another type.
inline constexpr int InvalidTriggerTypeNumber = -2147221503; // 0x80040001
// The service that starts tasks cannot be reached.
inline constexpr int ServiceNotRunningNumber = -2147216619; // 0x80041315
inline constexpr int FileAlreadyExistsNumber = 58;
inline constexpr int BadFileFormatNumber = 321;

AppError invalidTriggerType();
AppError serviceNotRunning();
AppError subscriptOutOfRange();
AppError taskExists(const QString &name);
AppError taskNotFound(const QString &name);
AppError badTaskName(const QString &name, const QString &why);
AppError damaged(const QString &path);
AppError notOurs(const QString &path);
AppError refused(const QString &why);

} // namespace TaskErrors
