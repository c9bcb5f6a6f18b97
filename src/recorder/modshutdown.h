#pragma once

#include "base/powercontrol.h"

#include <QString>

// Power actions after a recording: which systems may suspend, and the flags
// the shutdown request carries.
namespace modShutdown {

inline constexpr quint32 ExitPowerOff = 8;
inline constexpr quint32 ExitForce = 4;

struct OsInfo
{
    qint32 PlatformClass = 0; // 1 consumer line, 2 NT line, 0 unknown
    qint32 SystemCode = 0;    // see GetOsInfo
    qint32 Spare = 0;
    QString Version; // "major.minor"
};

// Consumer line: minor 0 -> 1, 10 -> 2, 90 -> 3. NT line: major below 5 -> 4,
// 5.0 -> 5, anything later -> 6. Everything else is class and code 0.
OsInfo GetOsInfo(const PowerControl::Version &version);

// Suspending is only offered by systems with code 2, 3, 5 or 6.
bool CanSuspend(const OsInfo &info);

// Adds the force flag when asked, then hands the request to the platform,
// holding the shutdown privilege around it on the NT line.
bool ExitWindows(PowerControl &power, quint32 flags, bool force);

// Suspends or hibernates where the system allows it; elsewhere does nothing
// and answers false.
bool Suspend(PowerControl &power, bool hibernate, bool force, bool disableWakeEvents);

} // namespace modShutdown
