#pragma once

#include <QString>

#include <functional>

// Start-up and the players report what they do through this hook. By default
// it keeps nothing; a sink can be attached (a log file through the
// TUNECATCH_TRACE environment variable, or a test's collector).
class TraceHook
{
public:
    using Sink = std::function<void(const QString &)>;

    TraceHook() = default;
    explicit TraceHook(Sink sink);

    void trace(const QString &line) const;

    // A hook that appends each line to the file named by TUNECATCH_TRACE, when set.
    static TraceHook fromEnvironment();

private:
    Sink m_sink;
};
