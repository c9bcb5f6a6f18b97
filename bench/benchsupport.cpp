#include "benchsupport.h"

#include <QFile>

#include <ctime>

void QuietPrompt::message(const QString &, const QString &, Icon)
{
    ++messages;
}

bool QuietPrompt::askYesNo(const QString &, const QString &, Icon, Answer)
{
    return m_answer;
}

QString QuietPrompt::chooseOpenFile(const QString &, const QString &, const QString &)
{
    return {};
}

double processMegabytes(const char *field)
{
    return processMegabytes(field, 0);
}

double processMegabytes(const char *field, qint64 pid)
{
    QFile status(pid > 0 ? QStringLiteral("/proc/%1/status").arg(pid) : QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray name(field);
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(name))
            return line.mid(name.size()).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

double processCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}
