#include "support/text.h"

#include <bit>

#include <windows.h>

namespace support {

const char* WineVersion() {
  using Function = const char*(__cdecl*)();
  const auto version =
      std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"));
  return version == nullptr ? nullptr : version();
}

}  // namespace support
