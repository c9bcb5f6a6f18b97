#pragma once

#include <QtGlobal>

// The operating system's power side, as the recorder needs it after a
// recording. The program's implementation talks to the platform; tests record
// the calls, since nothing may power off a test machine.
class PowerControl
{
public:
    // The system's version as the platform reports it (platform id 1 for the
    // consumer line, 2 for the NT line, anything else unknown).
    struct Version
    {
        int platformId = 0;
        int major = 0;
        int minor = 0;
    };

    virtual ~PowerControl() = default;

    virtual Version systemVersion() const = 0;
    // Systems of the NT line want the shutdown privilege held around the
    // request; elsewhere (logind asks its own policy) there is nothing to do.
    virtual void setShutdownPrivilege(bool /*enable*/) {}
    // Ends the session with the platform's exit flags (8 power off, 4 forced).
    // True when the request was accepted.
    virtual bool exitWindows(quint32 flags) = 0;
    // Suspends, or hibernates when hibernate is set. True when accepted.
    virtual bool SetSuspendState(bool hibernate, bool force, bool disableWakeEvents) = 0;
};
