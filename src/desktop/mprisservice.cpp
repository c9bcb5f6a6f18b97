#include "desktop/mprisservice.h"

#include "desktop/mprisadaptors.h"

#include <QCoreApplication>

MprisService::MprisService(PlayerRemote &player, QDBusConnection bus, QObject *parent)
    : QObject(parent), m_bus(std::move(bus))
{
    new MprisRootAdaptor(&m_object, player);
    new MprisPlayerAdaptor(&m_object, player, m_bus);
}

MprisService::~MprisService()
{
    if (m_busName.isEmpty())
        return;
    m_bus.unregisterService(m_busName);
    m_bus.unregisterObject(MprisPlayerAdaptor::ObjectPath);
}

bool MprisService::start()
{
    if (!m_busName.isEmpty())
        return true;
    if (!m_bus.isConnected() ||
        !m_bus.registerObject(MprisPlayerAdaptor::ObjectPath, &m_object, QDBusConnection::ExportAdaptors))
        return false;
    const QString names[] = {BusName, BusName + QStringLiteral(".instance") +
                                          QString::number(QCoreApplication::applicationPid())};
    for (const QString &name : names) {
        if (m_bus.registerService(name)) {
            m_busName = name;
            return true;
        }
    }
    m_bus.unregisterObject(MprisPlayerAdaptor::ObjectPath);
    return false;
}
