#pragma once

#include <functional>

namespace platform {

/// Milliseconds that this process may still wait for files and mutexes of other processes. All waits of a run
/// share them, so that several held files delay a run by one second together.
inline unsigned long g_nWaitLeftMs = 1000;

/// Calls `attempt` until it returns true or the process has no waiting time left, with a pause between two
/// calls. Calls it once at least. Returns the result of the last call, whose last error survives.
bool WaitFor(const std::function<bool()>& attempt);

}  // namespace platform
