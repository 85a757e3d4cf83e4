#pragma once

#include <windows.h>

#include "platform/handles.h"

namespace platform {

/// A turn at something that several processes of one session share. Whoever cannot have it in time goes on
/// without: waiting for ever would be worse than what the turn prevents. A turn that one may not even ask
/// for, because it is an elevated process's (ERROR_ACCESS_DENIED), counts as waited for in vain.
class SharedTurn {
 public:
  explicit SharedTurn(const wchar_t* name) : mutex_(CreateMutexW(nullptr, FALSE, name)) {}
  SharedTurn(const SharedTurn&) = delete;
  SharedTurn& operator=(const SharedTurn&) = delete;
  ~SharedTurn() {
    if (!held_) return;
    const DWORD error = GetLastError();
    ReleaseMutex(mutex_.get());
    SetLastError(error);
  }

  /// Waits for the turn, at most `milliseconds`; it then lasts as long as this object. The last error
  /// survives.
  void Take(DWORD milliseconds) {
    if (!mutex_ || held_) return;
    const DWORD error = GetLastError();
    const DWORD result = WaitForSingleObject(mutex_.get(), milliseconds);
    held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    SetLastError(error);
  }
  bool IsHeld() const { return held_; }

 private:
  UniqueKernelHandle mutex_;
  bool held_ = false;
};

}  // namespace platform
