#pragma once

#include <windows.h>

namespace platform {

/// Keeps the thread's last error over calls that may change it, so that a caller can still report its own
/// failure: restores at the end of the scope what it was at the beginning.
class LastErrorGuard {
 public:
  LastErrorGuard() = default;
  LastErrorGuard(const LastErrorGuard&) = delete;
  LastErrorGuard& operator=(const LastErrorGuard&) = delete;
  ~LastErrorGuard() { SetLastError(error_); }

 private:
  const DWORD error_ = GetLastError();
};

}  // namespace platform
