#include "platform/clock.h"

#include <windows.h>

#include <stdlib.h>
#include <time.h>

#include <cwchar>

namespace platform {

std::wstring FormatLocalTime(const wchar_t* format) {
  // 64-bit seconds: the 32-bit ones of MinGW end in 2038. A FILETIME counts 100 ns since 1601.
  constexpr __time64_t kSecondsTo1970 = 11644473600;
  FILETIME time{};
  GetSystemTimeAsFileTime(&time);
  const ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
  const __time64_t now = static_cast<__time64_t>(ticks.QuadPart / 10'000'000) - kSecondsTo1970;
  tm local{};
  if (_localtime64_s(&local, &now) != 0) std::abort();
  wchar_t buffer[128];
  const std::size_t length = std::wcsftime(buffer, 128, format, &local);
  return std::wstring(buffer, length);
}

}  // namespace platform
