#include "base/apperror.h"

AppError::AppError(int number, QString description)
    : m_number(number), m_description(std::move(description)), m_what(m_description.toLocal8Bit())
{
}

const char *AppError::what() const noexcept
{
    return m_what.constData();
}

AppError AppError::typeMismatch()
{
    return {TypeMismatch, tr("Type mismatch")};
}

AppError AppError::overflow()
{
    return {Overflow, tr("Overflow")};
}

AppError AppError::invalidArgument()
{
    return {InvalidArgument, tr("Invalid procedure call or argument")};
}

AppError AppError::pathFileAccess(const QString &path)
{
    return {PathFileAccess, tr("Path/File access error: %1").arg(path)};
}
