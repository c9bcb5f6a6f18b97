#pragma once

#include <functional>

// Runs the event loop until done() holds or the time is up, checking every
// few milliseconds. The loop never sleeps, so servers in this process keep
// streaming meanwhile. True when done() held.
bool waitUntil(const std::function<bool()> &done, int timeoutMs);
