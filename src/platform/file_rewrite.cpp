#include "platform/file_rewrite.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/last_error.h"

namespace platform {
namespace {

using namespace std::string_view_literals;

UniqueFile OpenLocked(const std::wstring& path) {
  return OpenWhenFree([&] {
    return UniqueFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  });
}

bool MoveTo(HANDLE file, std::size_t offset) {
  LARGE_INTEGER distance{};
  distance.QuadPart = static_cast<LONGLONG>(offset);
  return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE;
}

/// Replaces the `old_size` bytes of a file. Pads shorter content with line ends, because the file keeps its
/// old length until SetEndOfFile.
bool WriteContent(HANDLE file, std::size_t old_size, std::string_view content) {
  std::string filled(content);
  const std::string_view line_end = content.starts_with("\xff\xfe") ? "\n\0"sv : "\n"sv;
  while (filled.size() < old_size) filled += line_end;
  DWORD written = 0;
  if (!MoveTo(file, 0) ||
      !WriteFile(file, filled.data(), static_cast<DWORD>(filled.size()), &written, nullptr)) {
    return false;
  }
  if (written != filled.size()) {
    SetLastError(ERROR_DISK_FULL);
    return false;
  }
  return MoveTo(file, content.size()) && SetEndOfFile(file) && FlushFileBuffers(file);
}

bool MoveFromTemporaryFolder(const std::wstring& path, std::string_view bytes) {
  const TemporaryFile copy;
  UniqueFile file = OpenForWriting(copy.Path(), OPEN_EXISTING);
  if (!file || !WriteContent(file.get(), 0, bytes)) return false;
  file.reset();
  return MoveFileExW(copy.Path().c_str(), path.c_str(), MOVEFILE_WRITE_THROUGH) != FALSE;
}

}  // namespace

bool CreateWholeFile(const std::wstring& path, std::string_view bytes) {
  if (MoveFromTemporaryFolder(path, bytes)) return true;
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    if (GetLastError() == ERROR_FILE_EXISTS) SetLastError(ERROR_ALREADY_EXISTS);
    return false;
  }
  if (WriteContent(file.get(), 0, bytes)) return true;
  const LastErrorGuard guard;
  FILE_DISPOSITION_INFO removed{TRUE};
  SetFileInformationByHandle(file.get(), FileDispositionInfo, &removed, sizeof removed);
  return false;
}

bool RewriteFile(const std::wstring& path,
                 const std::function<std::optional<std::string>(std::string_view)>& change) {
  UniqueFile file = OpenLocked(path);
  if (!file && GetLastError() == ERROR_FILE_NOT_FOUND) {
    const std::optional<std::string> content = change({});
    if (!content) return false;
    if (CreateWholeFile(path, *content)) return true;
    // Another process has created it meanwhile.
    if (GetLastError() == ERROR_ALREADY_EXISTS) file = OpenLocked(path);
  }
  const std::optional<std::string> old = file ? ReadAll(file.get(), kRewriteLimit) : std::nullopt;
  const std::optional<std::string> content = old ? change(*old) : std::nullopt;
  if (!content) return false;
  if (*content == *old) return true;

  // The profile functions of Windows lock the whole file while they read it, and a write would then fail.
  // This lock waits until they have finished, and they wait while it is held.
  const FileLock lock(file.get(), 0, MAXLONGLONG);
  if (WriteContent(file.get(), old->size(), *content)) return true;
  const LastErrorGuard guard;
  WriteContent(file.get(), 0, *old);
  return false;
}

}  // namespace platform
