#pragma once

#include <functional>

namespace platform {

/// Milliseconds that this process may still wait for files and mutexes that other processes hold. All waits
/// of a run share this time, so that together they delay the run by one second at most.
inline unsigned long g_nWaitLeftMs = 1000;

/// Calls `attempt` until it returns true or the process has no waiting time left, with a pause of 20 ms
/// between two calls. Calls it at least once. Returns the result of the last call and keeps its last error.
bool WaitFor(const std::function<bool()>& attempt);

}  // namespace platform
