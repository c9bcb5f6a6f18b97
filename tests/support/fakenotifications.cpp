#include "support/fakenotifications.h"

bool FakeNotifications::serveOn(QDBusConnection bus)
{
    return bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                              QDBusConnection::ExportAllSlots) &&
           bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
}

uint FakeNotifications::Notify(const QString &app, uint replaces, const QString &icon, const QString &summary,
                               const QString &body, const QStringList &, const QVariantMap &hints, int)
{
    shown.append({replaces, app, icon, summary, body, hints});
    emit notified();
    return replaces ? replaces : ++m_lastId;
}
