#include "platform/files.h"

#include "platform/folders.h"
#include "platform/last_error.h"
#include "platform/wait.h"

namespace platform {
namespace {

constexpr DWORD kChunk = 64 * 1024;

/// Far beyond the end of any file, so that the lock excludes other calls of AppendAll and nothing else.
constexpr ULONGLONG kAppendLock = 0x4000'0000'0000'0000;

}  // namespace

FileLock::FileLock(HANDLE file, ULONGLONG offset, ULONGLONG length)
    : file_(file), length_{{static_cast<DWORD>(length), static_cast<DWORD>(length >> 32)}} {
  range_.Offset = static_cast<DWORD>(offset);
  range_.OffsetHigh = static_cast<DWORD>(offset >> 32);
  WaitFor([this] {
    held_ = LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, length_.LowPart,
                       length_.HighPart, &range_) != FALSE;
    return held_ || GetLastError() != ERROR_LOCK_VIOLATION;
  });
}

FileLock::~FileLock() {
  if (!held_) return;
  const LastErrorGuard guard;
  UnlockFileEx(file_, 0, length_.LowPart, length_.HighPart, &range_);
}

TemporaryFile::TemporaryFile() {
  const std::wstring folder = TemporaryFolder();
  wchar_t path[MAX_PATH]{};
  if (!folder.empty() && GetTempFileNameW(folder.c_str(), L"kor", 0, path) != 0) path_ = path;
}

TemporaryFile::~TemporaryFile() {
  if (path_.empty()) return;
  const LastErrorGuard guard;
  DeleteFileW(path_.c_str());
}

UniqueFile OpenWhenFree(const std::function<UniqueFile()>& open) {
  UniqueFile file;
  WaitFor([&] {
    file = open();
    return file || GetLastError() != ERROR_SHARING_VIOLATION;
  });
  return file;
}

UniqueFile OpenForWriting(const std::wstring& path, DWORD disposition) {
  return UniqueFile(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

UniqueFile OpenForReading(const std::wstring& path, DWORD share) {
  return UniqueFile(
      CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::optional<std::string> ReadAll(HANDLE file, std::size_t limit) {
  std::string bytes;
  for (DWORD read = kChunk; read != 0;) {
    const std::size_t size = bytes.size();
    if (size > limit) {
      SetLastError(ERROR_FILE_TOO_LARGE);
      return std::nullopt;
    }
    bytes.resize(size + kChunk);
    if (!ReadFile(file, bytes.data() + size, kChunk, &read, nullptr)) return std::nullopt;
    bytes.resize(size + read);
  }
  return bytes;
}

std::optional<std::string> ReadWholeFile(const std::wstring& path, std::size_t limit) {
  const UniqueFile file = OpenForReading(path);
  return file ? ReadAll(file.get(), limit) : std::nullopt;
}

bool WriteAll(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    const DWORD size = bytes.size() < kChunk ? static_cast<DWORD>(bytes.size()) : kChunk;
    if (!WriteFile(file, bytes.data(), size, &written, nullptr)) return false;
    if (written == 0) {
      SetLastError(ERROR_DISK_FULL);
      return false;
    }
    bytes.remove_prefix(written);
  }
  return true;
}

bool AppendAll(HANDLE file, std::string_view bytes) {
  const FileLock lock(file, kAppendLock, 1);
  const LARGE_INTEGER zero{};
  LARGE_INTEGER end{};
  if (!SetFilePointerEx(file, zero, &end, FILE_END)) return false;
  if (WriteAll(file, bytes)) return true;
  const LastErrorGuard guard;
  // Without the lock, another process may have appended meanwhile.
  if (lock.IsHeld() && SetFilePointerEx(file, end, nullptr, FILE_BEGIN)) SetEndOfFile(file);
  return false;
}

}  // namespace platform
