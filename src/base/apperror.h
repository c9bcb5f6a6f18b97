#pragma once

#include <QCoreApplication>
#include <QString>

#include <exception>

// A run-time failure that carries a number and a description, thrown where a
// failure is meant to reach the caller. The numbers follow the program's own
// long-standing numbering so that messages stay familiar to users. Where the
// description is made, it goes through AppError::tr.
class AppError : public std::exception
{
    Q_DECLARE_TR_FUNCTIONS(AppError)

public:
    enum Number {
        InvalidArgument = 5,
        Overflow = 6,
        SubscriptOutOfRange = 9,
        TypeMismatch = 13,
        FileNotFound = 53,
        PermissionDenied = 70,
        PathFileAccess = 75,
        PathNotFound = 76,
    };

    AppError(int number, QString description);

    int number() const { return m_number; }
    const QString &description() const { return m_description; }
    const char *what() const noexcept override;

    static AppError typeMismatch();
    static AppError overflow();
    static AppError invalidArgument();
    static AppError pathFileAccess(const QString &path);

private:
    int m_number;
    QString m_description;
    QByteArray m_what;
};
