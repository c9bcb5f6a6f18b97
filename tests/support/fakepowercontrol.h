#pragma once

#include "base/powercontrol.h"

#include <QList>

#include <functional>

// Records the power requests instead of making them; answers as scripted.
class FakePowerControl : public PowerControl
{
public:
    struct SuspendCall
    {
        bool hibernate, force, disableWakeEvents;
    };
    Version systemVersion() const override { return version; }
    bool exitWindows(quint32 flags) override;
    bool SetSuspendState(bool hibernate, bool force, bool disableWakeEvents) override;
    Version version{2, 6, 1};
    bool accept = true;
    // Runs at every request, so a test can look at the world at that moment.
    std::function<void()> onRequest;
    QList<quint32> exitCalls;
    QList<SuspendCall> suspendCalls;
};
