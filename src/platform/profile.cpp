#include "platform/profile.h"

#include <windows.h>

#include <optional>
#include <string_view>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/sharing.h"

namespace platform {
namespace {

using namespace std::string_view_literals;

/// A new, empty file in the folder for temporary files, removed with this object.
class TemporaryFile {
 public:
  TemporaryFile() {
    const std::wstring folder = TemporaryFolder();
    wchar_t path[MAX_PATH]{};
    if (!folder.empty() && GetTempFileNameW(folder.c_str(), L"kor", 0, path) != 0) path_ = path;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!path_.empty()) DeleteFileW(path_.c_str());
  }
  /// Empty when the file cannot be made.
  const std::wstring& Path() const { return path_; }

 private:
  std::wstring path_;
};

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
  return MoveTo(file, content.size()) && SetEndOfFile(file);
}

using Edit = std::function<std::optional<std::string>(std::string_view)>;

/// Replaces the content of a file by what `edit` makes of it; no result of `edit` leaves it unchanged. On
/// failure returns false with the last error set, and restores the old content.
bool Rewrite(HANDLE file, const Edit& edit) {
  if (!MoveTo(file, 0)) return false;
  const std::optional<std::string> old = ReadAll(file, kRewriteLimit);
  if (!old) return false;
  const std::optional<std::string> content = edit(*old);
  if (!content || *content == *old) return true;
  if (!WriteContent(file, old->size(), *content)) {
    const LastErrorGuard guard;
    WriteContent(file, old->size(), *old);
    return false;
  }
  // Some network file systems refuse this although the bytes are written.
  FlushFileBuffers(file);
  return true;
}

}  // namespace

std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity) {
  // The profile function does not wait for a file that another process holds: it returns the default.
  const UniqueFile readable = OpenShared(file, GENERIC_READ, kShareAll);
  if (!readable) return {};
  std::wstring buffer(capacity, L'\0');
  const DWORD length =
      GetPrivateProfileStringW(section, key, L"", buffer.data(), static_cast<DWORD>(capacity), file.c_str());
  buffer.resize(length < capacity ? length : capacity);
  // Every other reader of the file ends a value at its first null.
  return buffer.c_str();
}

void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value, const std::function<bool(const std::wstring& copy)>& condition) {
  const Edit edit = [&](std::string_view before) -> std::optional<std::string> {
    const TemporaryFile copy;
    {
      const UniqueFile written = OpenShared(copy.Path(), GENERIC_WRITE, FILE_SHARE_READ);
      if (!written || !WriteAll(written.get(), before)) return std::nullopt;
    }
    if (condition && !condition(copy.Path())) return std::nullopt;
    if (!WritePrivateProfileStringW(section, key, value, copy.Path().c_str())) return std::nullopt;
    return ReadWholeFile(copy.Path(), kRewriteLimit);
  };
  if (const UniqueFile opened = OpenShared(file, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ)) {
    // A profile function of another process can lock the bytes while it reads them.
    WaitFor(Purpose::file,
            [&] { return Rewrite(opened.get(), edit) || GetLastError() != ERROR_LOCK_VIOLATION; });
  } else if (GetLastError() == ERROR_FILE_NOT_FOUND) {
    if (const std::optional<std::string> content = edit({})) CreateWithContent(file, *content);
  }
}

std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity) {
  // Windows ends a list that it cut with two nulls too, so a cut name looks whole. We ask for one character
  // more: only a whole name is then followed by a null.
  std::wstring buffer(capacity + 1, L'\0');
  const DWORD length = GetPrivateProfileSectionNamesW(buffer.data(), capacity + 1, file.c_str());
  return buffer.substr(0, length < capacity ? length : capacity - 1);
}

}  // namespace platform
