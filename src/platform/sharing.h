#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "platform/handles.h"

/// Waiting for files and mutexes that other processes hold for a moment.
namespace platform {

/// Time, in milliseconds, that all waits after the start, or after an action of the user, share.
inline constexpr unsigned long kWaitMs = 1000;
/// What is left of that time. A user's action in the window, and its end, set it to kWaitMs again.
inline unsigned long g_nWaitLeftMs = kWaitMs;

/// What a process waits for. The value is the part of kWaitMs that the wait leaves to later ones: a check
/// without the mutex uses another file, but nothing replaces the log.
enum class Purpose : unsigned long { list_mutex = 500, file = 300, log = 0 };

/// Calls `attempt` until it returns true or no time is left for `purpose`, with a pause of 20 ms between two
/// calls. Calls it at least once. Returns the result of the last call and keeps its last error.
bool WaitFor(Purpose purpose, const std::function<bool()>& attempt);

/// For OpenShared: others may read, write, rename and delete the file.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Opens a file, with the parameters of CreateFileW. Waits while another process's handle excludes this one
/// (ERROR_SHARING_VIOLATION). On failure the last error is set.
UniqueFile OpenShared(const std::wstring& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING,
                      Purpose purpose = Purpose::file);

/// A mutex that protects a resource shared by the processes of one session. A caller that does not get it in
/// time continues without it. When an elevated process has created the mutex, this process may not open it;
/// Take then returns at once, and IsHeld stays false.
class NamedMutex {
 public:
  explicit NamedMutex(const wchar_t* name) : mutex_(CreateMutexW(nullptr, FALSE, name)) {}
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;
  ~NamedMutex();

  /// Takes the mutex until this object ends; waits for it. The last error survives.
  void Take();
  bool IsHeld() const { return held_; }

 private:
  UniqueKernelHandle mutex_;
  bool held_ = false;
};

}  // namespace platform
