#pragma once

#include <functional>

namespace platform {

/// Milliseconds that this process may still wait for what other processes hold. All waits of a run share it,
/// so that a machine on which several files are held delays a run by a second in all, not by a second for
/// each file.
inline unsigned long g_nWaitLeftMs = 1000;

/// Calls `attempt` until it returns true or the process has no waiting time left, with a pause between two
/// calls. Calls it once at least. Returns the result of the last call, whose last error survives.
bool WaitFor(const std::function<bool()>& attempt);

}  // namespace platform
