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
    return {TypeMismatch, QStringLiteral("Type mismatch")};
}

AppError AppError::overflow()
{
    return {Overflow, QStringLiteral("Overflow")};
}

AppError AppError::invalidArgument()
{
    return {InvalidArgument, QStringLiteral("Invalid procedure call or argument")};
}

AppError AppError::pathFileAccess(const QString &path)
{
    return {PathFileAccess, QStringLiteral("Path/File access error: ") + path};
}
