#include "platform/sharing.h"

#include <algorithm>

namespace platform {
namespace {

constexpr DWORD kPauseMs = 20;

}  // namespace

bool WaitFor(Purpose purpose, const std::function<bool()>& attempt) {
  const DWORD reserved = static_cast<DWORD>(purpose);
  while (!attempt()) {
    if (g_nWaitLeftMs <= reserved) return false;
    const LastErrorGuard guard;
    const DWORD available = g_nWaitLeftMs - reserved;
    const ULONGLONG start = GetTickCount64();
    Sleep(std::min(kPauseMs, available));
    // Measured, since a busy processor makes the pause longer.
    const DWORD waited = static_cast<DWORD>(GetTickCount64() - start) + 1;
    g_nWaitLeftMs -= std::min(waited, available);
  }
  return true;
}

UniqueFile OpenShared(const std::wstring& path, DWORD access, DWORD share, DWORD disposition,
                      Purpose purpose) {
  UniqueFile file;
  WaitFor(purpose, [&] {
    file = UniqueFile(
        CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file || GetLastError() != ERROR_SHARING_VIOLATION;
  });
  return file;
}

NamedMutex::~NamedMutex() {
  const LastErrorGuard guard;
  if (held_) ReleaseMutex(mutex_.get());
}

void NamedMutex::Take() {
  if (!mutex_ || held_) return;
  const LastErrorGuard guard;
  held_ = WaitFor(Purpose::list_mutex, [this] {
    const DWORD result = WaitForSingleObject(mutex_.get(), 0);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  });
}

}  // namespace platform
