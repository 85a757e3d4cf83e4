#include "platform/profile.h"

#include <windows.h>

#include "platform/files.h"

namespace platform {

std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity) {
  std::wstring buffer(capacity, L'\0');
  const DWORD length =
      GetPrivateProfileStringW(section, key, L"", buffer.data(), static_cast<DWORD>(capacity), file.c_str());
  buffer.resize(length < capacity ? length : capacity);
  // A value with a null in it ends there, as for every other reader of the file.
  return buffer.c_str();
}

void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value) {
  const auto write = [&](const std::wstring& path) {
    return WritePrivateProfileStringW(section, key, value, path.c_str()) != FALSE;
  };
  // The system's function rewrites the file in place: a copy takes that risk.
  if (ReplaceFileWhole(file, [&](const std::wstring& path) {
        return (path == file || CopyFileW(file.c_str(), path.c_str(), FALSE)) && write(path);
      })) {
    return;
  }
  // A missing file has nothing to lose; one that is held or stands in a closed folder can still be written
  // to.
  if (GetLastError() != ERROR_DISK_FULL) write(file);
}

std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity) {
  // The call ends every list with two nulls, also one that it cut, so a cut name and a whole one that ends
  // exactly there look alike. One character more tells: behind a whole name stands its null.
  std::wstring buffer(capacity + 1, L'\0');
  const DWORD length = GetPrivateProfileSectionNamesW(buffer.data(), capacity + 1, file.c_str());
  return buffer.substr(0, length < capacity ? length : capacity - 1);
}

}  // namespace platform
