#include "support/recordingsystemctl.h"

Systemctl::Result RecordingSystemctl::run(const QStringList &arguments)
{
    calls.append(arguments.join(u' '));
    Result result;
    result.reached = reachable;
    result.exitCode = reachable ? 0 : 1;
    if (reachable && arguments.first() == u"show")
        result.output = showOutput;
    return result;
}
