#include "recorder/modshutdown.h"

namespace modShutdown {

OsInfo GetOsInfo(const PowerControl::Version &version)
{
    OsInfo info;
    info.Version = QString::number(version.major) + u'.' + QString::number(version.minor);
    if (version.platformId == 1) {
        info.PlatformClass = 1;
        switch (version.minor) {
        case 0:
            info.SystemCode = 1;
            break;
        case 10:
            info.SystemCode = 2;
            break;
        case 90:
            info.SystemCode = 3;
            break;
        default:
            break;
        }
    } else if (version.platformId == 2) {
        info.PlatformClass = 2;
        if (version.major < 5)
            info.SystemCode = 4;
        else if (version.major == 5 && version.minor == 0)
            info.SystemCode = 5;
        else
            info.SystemCode = 6;
    }
    return info;
}

bool CanSuspend(const OsInfo &info)
{
    switch (info.SystemCode) {
    case 2:
    case 3:
    case 5:
    case 6:
        return true;
    default:
        return false;
    }
}

bool ExitWindows(PowerControl &power, quint32 flags, bool force)
{
    if (force)
        flags += ExitForce;
    if (GetOsInfo(power.systemVersion()).PlatformClass != 2)
        return power.exitWindows(flags);
    power.setShutdownPrivilege(true);
    const bool accepted = power.exitWindows(flags);
    power.setShutdownPrivilege(false);
    return accepted;
}

bool Suspend(PowerControl &power, bool hibernate, bool force, bool disableWakeEvents)
{
    if (!CanSuspend(GetOsInfo(power.systemVersion())))
        return false;
    return power.SetSuspendState(hibernate, force, disableWakeEvents);
}

} // namespace modShutdown
