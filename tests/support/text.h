#pragma once

#include <bit>

#include <windows.h>

#include "platform/system_text.h"

namespace support {

inline constexpr auto& Utf8 = platform::ToUtf8;

/// Wine's version, such as "8.0"; null on Windows.
inline const char* WineVersion() {
  using Function = const char*(__cdecl*)();
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  const auto version = std::bit_cast<Function>(GetProcAddress(ntdll, "wine_get_version"));
  return version == nullptr ? nullptr : version();
}

}  // namespace support
