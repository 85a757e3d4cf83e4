#pragma once

#include <windows.h>

/// Owners for the handles of the Windows API. A handle type is one alias of UniqueHandle over a traits type
/// that names the handle, its invalid value and its closing function.
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

/// Kernel objects whose functions report failure with a null handle.
struct KernelTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
/// Files and snapshots: failure is INVALID_HANDLE_VALUE.
struct FileTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
struct FindTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { FindClose(handle); }
};
struct RegistryTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { RegCloseKey(handle); }
};
/// Brushes and fonts.
template <class Object>
struct GdiTraits {
  using Handle = Object;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { DeleteObject(handle); }
};
struct SidTraits {
  using Handle = PSID;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { FreeSid(handle); }
};

using UniqueKernelHandle = UniqueHandle<KernelTraits>;
using UniqueFile = UniqueHandle<FileTraits>;
using UniqueSnapshot = UniqueHandle<FileTraits>;
using UniqueFind = UniqueHandle<FindTraits>;
using UniqueRegistryKey = UniqueHandle<RegistryTraits>;
using UniqueBrush = UniqueHandle<GdiTraits<HBRUSH>>;
using UniqueFont = UniqueHandle<GdiTraits<HFONT>>;
using UniqueSid = UniqueHandle<SidTraits>;

}  // namespace platform
