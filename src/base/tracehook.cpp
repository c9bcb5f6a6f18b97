#include "base/tracehook.h"

#include <QDateTime>
#include <QFile>

TraceHook::TraceHook(Sink sink) : m_sink(std::move(sink)) {}

void TraceHook::trace(const QString &line) const
{
    if (m_sink)
        m_sink(line);
}

TraceHook TraceHook::fromEnvironment()
{
    const QString path = qEnvironmentVariable("TUNECATCH_TRACE");
    if (path.isEmpty())
        return {};
    return TraceHook([path](const QString &line) {
        QFile log(path);
        if (log.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
            log.write((QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + u' ' + line + u'\n').toUtf8());
    });
}
