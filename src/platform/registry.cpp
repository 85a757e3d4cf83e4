#include "platform/registry.h"

#include <cwchar>

namespace platform {

UniqueRegistryKey OpenMachineKey(const std::wstring& path, LSTATUS& error) {
  HKEY key = nullptr;
  error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
  return UniqueRegistryKey(error == ERROR_SUCCESS ? key : nullptr);
}

LSTATUS QueryText(HKEY key, const wchar_t* name, std::wstring& text) {
  // One character longer than the function may fill, so that a value stored without a terminator gets one.
  wchar_t buffer[kRegistryValueBytes / sizeof(wchar_t) + 1]{};
  DWORD type = REG_SZ;
  DWORD size = kRegistryValueBytes;
  const LSTATUS error = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size);
  if (error == ERROR_SUCCESS) {
    // Drops an odd last byte, which is not a whole character.
    text.assign(buffer, size / sizeof(wchar_t));
    text.resize(std::wcslen(text.c_str()));
  }
  return error;
}

}  // namespace platform
