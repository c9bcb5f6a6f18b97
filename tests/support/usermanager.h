#pragma once

#include "schedule/systemctl.h"

#include <QProcess>
#include <QString>

// A user service manager of the test's own: systemd --user in a private mount
// namespace (where /run/systemd/system exists, so it starts on a machine not
// booted with systemd), on the runtime and configuration folders of the
// current profile and without a display. systemctl --user in the test reaches
// it through XDG_RUNTIME_DIR. Where it cannot run (no right to make the
// namespace or to mount), running() is false and why() says what failed.
class UserManager
{
public:
    UserManager();
    ~UserManager();
    Q_DISABLE_COPY_MOVE(UserManager)

    bool running() const { return m_why.isEmpty(); }
    QString why() const { return m_why; }

    // Runs `systemctl --user` to its end, for the test's own questions; times come in UTC.
    static Systemctl::Result systemctl(const QStringList &arguments);

private:
    QProcess m_manager;
    QString m_why;
};
