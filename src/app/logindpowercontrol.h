#pragma once

#include "base/powercontrol.h"

#include <QString>

// Power off and hibernate through systemd-logind on the system bus. The
// request is handed over and not followed up: a refusal is not reported.
class LogindPowerControl : public PowerControl
{
public:
    // logind offers hibernation wherever it runs, so it reports the class of
    // system that may suspend.
    Version systemVersion() const override;
    bool exitWindows(quint32 flags) override;
    bool SetSuspendState(bool hibernate, bool force, bool disableWakeEvents) override;

private:
    static bool callManager(const QString &method);
};
