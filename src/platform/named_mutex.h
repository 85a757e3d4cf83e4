#pragma once

#include <windows.h>

#include "platform/handles.h"
#include "platform/last_error.h"
#include "platform/wait.h"

namespace platform {

/// A mutex that protects a resource shared by the processes of one session. A caller that does not get it in
/// time continues without it, because waiting for ever would do more harm than unprotected access. When an
/// elevated process has created the mutex, this process may not open it; Take then returns at once, and
/// IsHeld stays false.
class NamedMutex {
 public:
  explicit NamedMutex(const wchar_t* name) : mutex_(CreateMutexW(nullptr, FALSE, name)) {}
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;
  ~NamedMutex() {
    const LastErrorGuard guard;
    if (held_) ReleaseMutex(mutex_.get());
  }

  /// Takes the mutex until this object ends; waits for it as WaitFor does. The last error survives.
  void Take() {
    if (!mutex_ || held_) return;
    const LastErrorGuard guard;
    held_ = WaitFor([this] {
      const DWORD result = WaitForSingleObject(mutex_.get(), 0);
      return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    });
  }
  bool IsHeld() const { return held_; }

 private:
  UniqueKernelHandle mutex_;
  bool held_ = false;
};

}  // namespace platform
