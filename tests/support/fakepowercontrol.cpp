#include "support/fakepowercontrol.h"

bool FakePowerControl::exitWindows(quint32 flags)
{
    if (onRequest)
        onRequest();
    exitCalls.append(flags);
    return accept;
}

bool FakePowerControl::SetSuspendState(bool hibernate, bool force, bool disableWakeEvents)
{
    if (onRequest)
        onRequest();
    suspendCalls.append({hibernate, force, disableWakeEvents});
    return accept;
}
