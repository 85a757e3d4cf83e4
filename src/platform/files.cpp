#include "platform/files.h"

#include "platform/sharing.h"

namespace platform {
namespace {

constexpr DWORD kChunk = 64 * 1024;

}  // namespace

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
  const UniqueFile file = OpenShared(path, GENERIC_READ, kShareAll);
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
  LARGE_INTEGER end{};
  if (!SetFilePointerEx(file, {}, &end, FILE_END)) return false;
  if (WriteAll(file, bytes)) return true;
  const LastErrorGuard guard;
  if (SetFilePointerEx(file, end, nullptr, FILE_BEGIN)) SetEndOfFile(file);
  return false;
}

bool CreateWithContent(const std::wstring& path, std::string_view bytes) {
  const UniqueFile file = OpenShared(path, GENERIC_WRITE | DELETE, 0, CREATE_NEW);
  if (!file) return false;
  if (WriteAll(file.get(), bytes)) return true;
  const LastErrorGuard guard;
  FILE_DISPOSITION_INFO removed{TRUE};
  SetFileInformationByHandle(file.get(), FileDispositionInfo, &removed, sizeof removed);
  return false;
}

}  // namespace platform
