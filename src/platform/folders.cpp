#include "platform/folders.h"

#include <shlobj.h>
#include <shlwapi.h>
#include <windows.h>

namespace platform {

std::wstring DocumentsFolder() {
  wchar_t path[MAX_PATH]{};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, path))) return {};
  return path;
}

std::wstring CommonAppDataFolder() {
  wchar_t path[MAX_PATH]{};
  if (!SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, TRUE)) return {};
  return path;
}

std::wstring TemporaryFolder() {
  // GetTempPathW returns up to MAX_PATH + 1 characters.
  wchar_t path[MAX_PATH + 1]{};
  const DWORD length = GetTempPathW(MAX_PATH + 1, path);
  if (length == 0 || length > MAX_PATH) return {};
  return path;
}

std::wstring ModulePath() {
  wchar_t path[520]{};
  const DWORD length = GetModuleFileNameW(nullptr, path, 520);
  return length < 520 ? std::wstring(path, length) : std::wstring();
}

std::wstring AppendPath(const std::wstring& folder, const std::wstring& more) {
  if (folder.empty() || folder.size() >= MAX_PATH) return {};
  wchar_t path[MAX_PATH]{};
  folder.copy(path, folder.size());
  return PathAppendW(path, more.c_str()) ? std::wstring(path) : std::wstring();
}

bool FileExists(const std::wstring& path) {
  return PathFileExistsW(path.c_str()) != FALSE;
}

bool DirectoryExists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return true;
  SetLastError(ERROR_DIRECTORY);
  return false;
}

}  // namespace platform
