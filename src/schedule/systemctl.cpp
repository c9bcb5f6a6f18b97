#include "schedule/systemctl.h"

#include <QProcess>

namespace {

// daemon-reload on a busy manager can take a while; a hung call must not
// hang the window for longer than this.
constexpr int timeoutMs = 20000;

} // namespace

Systemctl::Result ProcessSystemctl::run(const QStringList &arguments)
{
    QProcess process;
    // Times in UTC, so they read back the same whatever the user's zone.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("systemctl"), QStringList{QStringLiteral("--user")} + arguments);
    Result result;
    if (!process.waitForStarted(timeoutMs))
        return result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = process.readAllStandardOutput();
    result.error = process.readAllStandardError();
    // systemctl's wording when neither the private socket nor the user bus
    // answers, or when a session bus is there but cannot start the manager.
    result.reached = !result.error.contains("Failed to connect to bus") &&
                     !result.error.contains("Failed to connect to user scope bus") &&
                     !result.error.contains("org.freedesktop.systemd1");
    return result;
}
