#pragma once

#include "schedule/systemctl.h"

// Stands in for `systemctl --user`: remembers every call and answers as a
// reachable (or unreachable) user manager would, `show` with a set output.
class RecordingSystemctl : public Systemctl
{
public:
    Result run(const QStringList &arguments) override;
    QStringList calls;
    bool reachable = true;
    QByteArray showOutput;
};
