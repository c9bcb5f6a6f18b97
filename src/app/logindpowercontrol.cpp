#include "app/logindpowercontrol.h"

#include "recorder/modshutdown.h"

#include <QDBusConnection>
#include <QDBusMessage>

PowerControl::Version LogindPowerControl::systemVersion() const
{
    return {2, 6, 0};
}

bool LogindPowerControl::exitWindows(quint32 flags)
{
    // Only powering off is asked for; log-off and restart are not offered here.
    if (!(flags & modShutdown::ExitPowerOff))
        return false;
    return callManager(QStringLiteral("PowerOff"));
}

bool LogindPowerControl::SetSuspendState(bool hibernate, bool, bool)
{
    // logind has no force or wake-event switches: it applies its own policy.
    return callManager(hibernate ? QStringLiteral("Hibernate") : QStringLiteral("Suspend"));
}

bool LogindPowerControl::callManager(const QString &method)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), method);
    // Not interactive: a recording that ends at night has nobody to ask.
    call << false;
    const QDBusMessage reply = QDBusConnection::systemBus().call(call, QDBus::Block, 10000);
    return reply.type() == QDBusMessage::ReplyMessage;
}
