#pragma once

#include <windows.h>

#include <cstdint>

/// Owners for the handles of the Windows API, and for the last error. A handle type is one alias of
/// UniqueHandle over its traits.
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

template <class Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  Handle get() const { return handle_; }
  explicit operator bool() const { return handle_ != Traits::Invalid(); }
  /// For functions that return a handle through a pointer; closes the present one.
  Handle* put() {
    reset();
    return &handle_;
  }
  Handle release() {
    Handle handle = handle_;
    handle_ = Traits::Invalid();
    return handle;
  }
  /// Closes the present handle; the last error survives, so that a failure can be reported afterwards.
  void reset(Handle handle = Traits::Invalid()) {
    if (handle_ != Traits::Invalid()) {
      const LastErrorGuard guard;
      Traits::Close(handle_);
    }
    handle_ = handle;
  }

 private:
  Handle handle_ = Traits::Invalid();
};

/// `close`: what closes the handle when it is called. `invalid`: the value that reports a failure.
template <class Type, auto& close, std::intptr_t invalid = 0>
struct HandleTraits {
  using Handle = Type;
  static Handle Invalid() { return reinterpret_cast<Handle>(invalid); }
  static void Close(Handle handle) { close(handle); }
};

using UniqueKernelHandle = UniqueHandle<HandleTraits<HANDLE, CloseHandle>>;
using UniqueFile = UniqueHandle<HandleTraits<HANDLE, CloseHandle, -1>>;
using UniqueSnapshot = UniqueFile;
using UniqueFind = UniqueHandle<HandleTraits<HANDLE, FindClose, -1>>;
using UniqueRegistryKey = UniqueHandle<HandleTraits<HKEY, RegCloseKey>>;
using UniqueBrush = UniqueHandle<HandleTraits<HBRUSH, DeleteObject>>;
using UniqueFont = UniqueHandle<HandleTraits<HFONT, DeleteObject>>;
using UniqueDescriptor = UniqueHandle<HandleTraits<PSECURITY_DESCRIPTOR, LocalFree>>;

}  // namespace platform
