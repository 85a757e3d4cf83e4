#include "platform/clock.h"

#include <stdlib.h>
#include <time.h>

#include <cwchar>

namespace platform {

std::wstring FormatLocalTime(const wchar_t* format) {
  // 64-bit seconds: the 32-bit ones of this target end in 2038.
  const __time64_t now = _time64(nullptr);
  tm local{};
  if (_localtime64_s(&local, &now) != 0) std::abort();
  wchar_t buffer[128];
  const std::size_t length = std::wcsftime(buffer, 128, format, &local);
  return std::wstring(buffer, length);
}

}  // namespace platform
