#include "support/usermanager.h"

#include "support/eventwait.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

UserManager::UserManager()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"XAUTHORITY"_s})
        environment.remove(name);
    m_manager.setProcessEnvironment(environment);
    m_manager.setProcessChannelMode(QProcess::MergedChannels);
    const QString systemd = QFileInfo::exists(u"/lib/systemd/systemd"_s) ? u"/lib/systemd/systemd"_s
                                                                         : u"/usr/lib/systemd/systemd"_s;
    m_manager.start(u"unshare"_s,
                    {u"--mount"_s, u"--propagation"_s, u"private"_s, u"--fork"_s, u"--kill-child"_s,
                     u"/bin/sh"_s, u"-c"_s,
                     u"mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/system && exec \"$0\" --user"_s,
                     systemd});
    if (!m_manager.waitForStarted(10000)) {
        m_why = u"unshare did not start"_s;
        return;
    }
    const bool answered = waitUntil(
        [this] {
            return m_manager.state() == QProcess::NotRunning ||
                   systemctl({u"show"_s, u"--property=Version"_s}).exitCode == 0;
        },
        20000);
    if (!answered || m_manager.state() == QProcess::NotRunning)
        m_why = u"no private user manager here: "_s + QString::fromLocal8Bit(m_manager.readAll()).trimmed();
}

UserManager::~UserManager()
{
    if (m_manager.state() == QProcess::NotRunning)
        return;
    systemctl({u"exit"_s});
    if (!m_manager.waitForFinished(20000)) {
        m_manager.terminate();
        m_manager.waitForFinished(5000);
    }
}

Systemctl::Result UserManager::systemctl(const QStringList &arguments)
{
    QProcess process;
    // Times in UTC, whatever the machine's zone.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TZ"_s, u"UTC"_s);
    process.setProcessEnvironment(environment);
    process.start(u"systemctl"_s, QStringList{u"--user"_s} + arguments);
    Systemctl::Result result;
    if (!process.waitForFinished(20000))
        return result;
    result.reached = true;
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = process.readAllStandardOutput();
    result.error = process.readAllStandardError();
    return result;
}
