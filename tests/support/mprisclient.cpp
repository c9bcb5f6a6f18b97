#include "support/mprisclient.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

const QString Path = QStringLiteral("/org/mpris/MediaPlayer2");
const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace

bool MprisClient::listen(QDBusConnection bus, const QString &service)
{
    m_bus = bus;
    m_service = service;
    return m_bus.connect(service, Path, Properties, QStringLiteral("PropertiesChanged"), this,
                         SLOT(record(QString, QVariantMap, QStringList)));
}

QDBusMessage MprisClient::call(const QString &interface, const QString &method, const QVariantList &args)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, Path, interface, method);
    message.setArguments(args);
    return m_bus.call(message, QDBus::BlockWithGui, 5000);
}

QVariant MprisClient::get(const QString &interface, const QString &name)
{
    const QDBusMessage reply = call(Properties, QStringLiteral("Get"), {interface, name});
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    return reply.arguments().isEmpty() ? QVariant()
                                       : plain(reply.arguments()[0].value<QDBusVariant>().variant());
}

QDBusMessage MprisClient::set(const QString &interface, const QString &name, const QVariant &value)
{
    return call(Properties, QStringLiteral("Set"),
                {interface, name, QVariant::fromValue(QDBusVariant(value))});
}

QVariantMap MprisClient::signalled()
{
    QSignalSpy spy(this, &MprisClient::recorded);
    if (m_changes.isEmpty()) {
        EXPECT_TRUE(spy.wait(5000));
    }
    QVariantMap merged;
    for (const QVariantMap &change : std::as_const(m_changes))
        merged.insert(change);
    m_changes.clear();
    return merged;
}

bool MprisClient::waitForChange(const QString &name, const QVariant &value)
{
    QSignalSpy spy(this, &MprisClient::recorded);
    for (;;) {
        while (!m_changes.isEmpty()) {
            if (m_changes.takeFirst().value(name, QVariant()) == value)
                return true;
        }
        if (!spy.wait(5000))
            return false;
    }
}

QVariant MprisClient::plain(const QVariant &value)
{
    QVariantMap map;
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        map = qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    else if (value.metaType() == QMetaType::fromType<QVariantMap>())
        map = value.toMap();
    else
        return value;
    for (QVariant &inner : map)
        inner = plain(inner);
    return map;
}

void MprisClient::record(const QString &interface, const QVariantMap &changed, const QStringList &)
{
    EXPECT_EQ(interface, Player);
    m_changes.append(plain(changed).toMap());
    emit recorded();
}
