#include "platform/profile.h"

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/files.h"
#include "platform/journaled_file.h"

namespace platform {
namespace {

/// Without blanks and the nulls of UTF-16.
std::string LastLine(std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find_last_not_of(std::string_view("\r\n\t \0", 5)) + 1);
  std::string line(bytes.substr(bytes.find_last_of("\r\n") + 1));
  std::erase_if(line, [](char c) { return c == ' ' || c == '\t' || c == '\0'; });
  return line;
}

/// Whether a file that `value` was written to still ends as it did, or with this value. Not every system's
/// function tells of a disk that filled up before it had written everything.
bool HasItsEnd(std::string_view now, std::string_view before, const wchar_t* value) {
  const std::string end = LastLine(now);
  return (!end.empty() && end == LastLine(before)) || end.ends_with("=" + ToUtf8(value));
}

}  // namespace

std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity) {
  const JournaledFile turn(file);
  std::wstring buffer(capacity, L'\0');
  const DWORD length =
      GetPrivateProfileStringW(section, key, L"", buffer.data(), static_cast<DWORD>(capacity), file.c_str());
  buffer.resize(length < capacity ? length : capacity);
  // A value with a null in it ends there, as for every other reader of the file.
  return buffer.c_str();
}

void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value) {
  JournaledFile(file).Rewrite([&](std::string_view before) {
    if (!WritePrivateProfileStringW(section, key, value, file.c_str())) return false;
    const std::optional<std::string> now = ReadWholeFile(file, SIZE_MAX);
    if (!now || HasItsEnd(*now, before, value)) return true;
    SetLastError(ERROR_DISK_FULL);
    return false;
  });
}

std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity) {
  // The call ends every list with two nulls, also one that it cut, so a cut name and a whole one that ends
  // exactly there look alike. One character more tells: behind a whole name stands its null.
  std::wstring buffer(capacity + 1, L'\0');
  const DWORD length = GetPrivateProfileSectionNamesW(buffer.data(), capacity + 1, file.c_str());
  return buffer.substr(0, length < capacity ? length : capacity - 1);
}

}  // namespace platform
