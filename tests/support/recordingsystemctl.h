#pragma once

#include "schedule/systemctl.h"

// Stands in for `systemctl --user`: remembers every call and answers at once
// as a reachable (or unreachable) user manager would, `show` with a set output.
class RecordingSystemctl : public Systemctl
{
public:
    void call(const QStringList &arguments, Done done = {}) override;
    bool busy() const override { return false; }
    QStringList calls;
    bool reachable = true;
    QByteArray showOutput;
};
