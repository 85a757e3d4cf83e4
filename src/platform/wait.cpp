#include "platform/wait.h"

#include <windows.h>

#include <algorithm>

#include "platform/last_error.h"

namespace platform {
namespace {

constexpr DWORD kPauseMs = 20;

}  // namespace

bool WaitFor(const std::function<bool()>& attempt) {
  while (!attempt()) {
    if (g_nWaitLeftMs == 0) return false;
    const LastErrorGuard guard;
    const ULONGLONG start = GetTickCount64();
    Sleep(std::min<DWORD>(kPauseMs, g_nWaitLeftMs));
    // Measured, since a busy processor makes the pause longer.
    g_nWaitLeftMs -= std::min<DWORD>(static_cast<DWORD>(GetTickCount64() - start) + 1, g_nWaitLeftMs);
  }
  return true;
}

}  // namespace platform
