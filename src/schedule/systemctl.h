#pragma once

#include <QByteArray>
#include <QStringList>

// `systemctl --user` as the task store uses it to activate what it wrote.
// Tests replace it: nothing may start or stop real units of the test machine.
class Systemctl
{
public:
    struct Result
    {
        // False when systemctl could not be started or could not reach the
        // user's service manager.
        bool reached = false;
        int exitCode = -1;
        QByteArray output;
        QByteArray error;
    };

    virtual ~Systemctl() = default;
    // Runs `systemctl --user` with these arguments and waits for it.
    virtual Result run(const QStringList &arguments) = 0;
};

// The real systemctl, given a few seconds per call.
class ProcessSystemctl : public Systemctl
{
public:
    Result run(const QStringList &arguments) override;
};
