#pragma once

#include <windows.h>

namespace platform {

/// Saves the thread's last error and restores it at the end of the scope, so that a caller can still report
/// its failure after calls that change the last error.
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
