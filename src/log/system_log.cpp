#include "log/system_log.h"

#include <windows.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "log/log_rules.h"
#include "log/log_texts.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "platform/sharing.h"
#include "platform/system_text.h"
#include "product/identity.h"

namespace {

// In bytes. A larger log is not copied to a new file; it counts as one that cannot be opened.
constexpr std::size_t kHistoryLimit = 64 * 1024 * 1024;

/// Returns nothing when the folder cannot be listed completely, because an unseen file must not count as
/// missing.
std::optional<std::vector<log_rules::LogFileEntry>> FindLogFiles(const std::wstring& folder) {
  std::vector<log_rules::LogFileEntry> files;
  WIN32_FIND_DATAW data{};
  const platform::UniqueFind find(FindFirstFileW((folder + L"\\*.log").c_str(), &data));
  if (!find && GetLastError() == ERROR_FILE_NOT_FOUND) return files;
  if (!find) return std::nullopt;
  do {
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    // Every user may create files in the folder: a link there could lead an elevated run to another file.
    const bool tagged = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (tagged && IsReparseTagNameSurrogate(data.dwReserved0)) continue;
    if (!log_rules::IsLogFileName(data.cFileName)) continue;
    const ULARGE_INTEGER time{{data.ftLastWriteTime.dwLowDateTime, data.ftLastWriteTime.dwHighDateTime}};
    files.push_back({data.cFileName, time.QuadPart});
  } while (FindNextFileW(find.get(), &data));
  if (GetLastError() != ERROR_NO_MORE_FILES) return std::nullopt;
  return files;
}

std::wstring NewFileName() {
  return std::wstring(log_texts::kFilePrefix)
      .append(platform::FormatLocalTime(log_texts::kFileDateFormat))
      .append(log_texts::kFileExtension);
}

}  // namespace

void SystemLog::SetHeader(std::wstring_view header) {
  if (!header_written_) header_ = header;
}

void SystemLog::ApplyBuildVersion(std::wstring_view build_line, std::wstring_view file_version) {
  log_rules::ReplaceBuildLine(header_, build_line, file_version);
}

void SystemLog::AppendErrorLine(std::wstring_view text) {
  if (text.empty()) return;
  const std::wstring line = platform::FormatLocalTime(log_texts::kErrorLineFormat).append(text).append(L"\n");
  pending_ += line;
  error_text_ += line;
}

void SystemLog::OpenSystemLog() {
  if (header_.empty() && pending_.empty()) return;
  if (!g_strCurrentLogFile.empty() &&
      WriteAtEnd(g_strCurrentLogFile, OPEN_EXISTING, {}) != Outcome::not_opened) {
    return;
  }
  const std::wstring common = platform::CommonAppDataFolder();
  if (common.empty()) return;
  const std::wstring folder = common + std::wstring(identity::kLogFolder);
  if (!platform::DirectoryExists(folder)) return;
  const std::optional<std::vector<log_rules::LogFileEntry>> files = FindLogFiles(folder);
  if (!files) return;
  const std::optional<std::size_t> chosen = log_rules::ChooseLogFile(*files);
  if (chosen) {
    AppendTo(folder, (*files)[*chosen].name);
  } else {
    CreateFileIn(folder, NewFileName(), {});
  }
}

void SystemLog::CreateFileIn(const std::wstring& folder, const std::wstring& name, std::string_view history) {
  if (WriteAtEnd(folder + L"\\" + name, OPEN_ALWAYS, history) == Outcome::not_opened) {
    AppendErrorLine(log_texts::kCreationFailed);
  }
}

void SystemLog::AppendTo(const std::wstring& folder, const std::wstring& name) {
  const std::wstring path = folder + L"\\" + name;
  if (WriteAtEnd(path, OPEN_EXISTING, {}) != Outcome::not_opened) return;
  std::string history(log_texts::kHistoryFailed);
  if (const auto file = platform::OpenShared(path, GENERIC_READ, platform::kShareAll)) {
    std::optional<std::string> bytes = platform::ReadAll(file.get(), kHistoryLimit);
    const DWORD error = GetLastError();
    if (!bytes && error != ERROR_FILE_TOO_LARGE) {
      ReportFailure(error);
      return;
    }
    if (bytes) history = std::move(*bytes);
  }
  // The file may have got its name in this minute. It must not get its own lines once more.
  const std::wstring new_name = NewFileName();
  if (new_name == name) history.clear();
  CreateFileIn(folder, new_name, log_rules::WithLf(std::move(history)));
}

SystemLog::Outcome SystemLog::WriteAtEnd(const std::wstring& path, unsigned long disposition,
                                         std::string_view history) {
  // Shared for reading only, so that utilities append one after the other.
  const auto file =
      platform::OpenShared(path, GENERIC_WRITE, FILE_SHARE_READ, disposition, platform::Purpose::log);
  if (!file) return Outcome::not_opened;
  std::string bytes(history);
  bytes += platform::ToUtf8(log_rules::Normalise(PendingText()));
  if (!platform::AppendAll(file.get(), log_rules::WithCrLf(std::move(bytes)))) {
    ReportFailure(GetLastError());
    return Outcome::failed;
  }
  header_written_ = true;
  header_.clear();
  pending_.clear();
  g_strCurrentLogFile = path;
  return Outcome::written;
}

void SystemLog::ReportFailure(unsigned long error) {
  AppendErrorLine(std::wstring(log_texts::kUpdateFailed).append(platform::SystemMessage(error)));
}
