#include "support/privatebus.h"

#include <QDBusError>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

PrivateBus::PrivateBus()
{
    const QString config = m_dir.filePath(u"bus.conf"_s);
    QFile file(config);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=)" +
               QFile::encodeName(m_dir.path()) + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");
    file.close();
    m_daemon.start(u"dbus-daemon"_s, {u"--config-file="_s + config, u"--nofork"_s, u"--print-address"_s});
    QByteArray line;
    while (!line.endsWith('\n') && m_daemon.waitForReadyRead(10000))
        line += m_daemon.readLine();
    m_address = QString::fromUtf8(line.trimmed());
    EXPECT_FALSE(m_address.isEmpty())
        << "dbus-daemon did not start: " << m_daemon.readAllStandardError().toStdString();
}

PrivateBus::~PrivateBus()
{
    for (const QString &name : std::as_const(m_connections))
        QDBusConnection::disconnectFromBus(name);
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(5000))
        m_daemon.kill();
    m_daemon.waitForFinished(5000);
}

QDBusConnection PrivateBus::connect()
{
    static int serial = 0;
    const QString name = u"private bus connection "_s + QString::number(++serial);
    m_connections.append(name);
    QDBusConnection bus = QDBusConnection::connectToBus(m_address, name);
    EXPECT_TRUE(bus.isConnected()) << bus.lastError().message().toStdString();
    return bus;
}
