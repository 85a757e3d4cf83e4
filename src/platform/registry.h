#pragma once

#include <windows.h>

#include <string>

#include "platform/handles.h"

namespace platform {

/// Size, in bytes, of the buffer that a registry value is read into, terminator included.
inline constexpr DWORD kRegistryValueBytes = 256;

/// Opens a key under HKEY_LOCAL_MACHINE for reading. `error` gets the registry function's result.
UniqueRegistryKey OpenMachineKey(const std::wstring& path, LSTATUS& error);

/// Reads a value of any type as UTF-16 text; `text` ends at its first null or with the stored bytes, and
/// stays unchanged on failure. Returns the registry function's result: ERROR_MORE_DATA (234) when the value
/// is longer than the buffer.
LSTATUS QueryText(HKEY key, const wchar_t* name, std::wstring& text);

}  // namespace platform
