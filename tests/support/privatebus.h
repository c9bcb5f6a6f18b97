#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

// A session bus of the test's own: a dbus-daemon on a socket in a temporary
// folder, with no services to start on demand, so no test ever reaches the
// machine's real bus or a notification daemon installed there.
class PrivateBus
{
public:
    PrivateBus();
    // Closes every connection made, then ends the daemon it started.
    ~PrivateBus();
    Q_DISABLE_COPY_MOVE(PrivateBus)

    QString address() const { return m_address; }
    // A new connection to this bus; each call gives another one.
    QDBusConnection connect();

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};
