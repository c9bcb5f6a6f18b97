#include "support/recordingsystemctl.h"

void RecordingSystemctl::call(const QStringList &arguments, Done done)
{
    calls.append(arguments.join(u' '));
    Result result;
    result.reached = reachable;
    result.exitCode = reachable ? 0 : 1;
    if (reachable && arguments.first() == u"show")
        result.output = showOutput;
    if (done)
        done(result);
}
