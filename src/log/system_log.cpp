#include "log/system_log.h"

#include <windows.h>

#include <vector>

#include "log/log_file_choice.h"
#include "log/log_text.h"
#include "log/log_texts.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "product/identity.h"

namespace {

// A log that grew beyond this is not carried over into a new file.
constexpr std::size_t kHistoryLimit = 64 * 1024 * 1024;

std::vector<LogFileEntry> FindLogFiles(const std::wstring& folder) {
  std::vector<LogFileEntry> files;
  WIN32_FIND_DATAW data{};
  const platform::UniqueFind find(FindFirstFileW((folder + L"\\*.log").c_str(), &data));
  if (!find) return files;
  do {
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    if (!log_text::IsLogFileName(data.cFileName)) continue;
    const ULARGE_INTEGER time{{data.ftLastWriteTime.dwLowDateTime, data.ftLastWriteTime.dwHighDateTime}};
    files.push_back({data.cFileName, time.QuadPart});
  } while (FindNextFileW(find.get(), &data));
  return files;
}

}  // namespace

void SystemLog::AppendErrorLine(std::wstring_view text) {
  if (text.empty()) return;
  const std::wstring line = platform::FormatLocalTime(log_texts::kErrorLineFormat).append(text).append(L"\n");
  pending_ += line;
  error_text_ += line;
}

void SystemLog::OpenSystemLog() {
  const std::wstring common = platform::CommonAppDataFolder();
  if (common.empty()) return;
  const std::wstring folder = common + std::wstring(identity::kLogFolder);
  if (!platform::DirectoryExists(folder)) return;
  const std::vector<LogFileEntry> files = FindLogFiles(folder);
  const std::optional<std::size_t> chosen = ChooseLogFile(files);
  if (chosen) {
    AppendTo(folder, files[*chosen].name);
  } else {
    CreateFileIn(folder, {});
  }
}

void SystemLog::CreateFileIn(const std::wstring& folder, std::string_view history) {
  std::wstring path = folder + L"\\";
  path.append(log_texts::kFilePrefix)
      .append(platform::FormatLocalTime(log_texts::kFileDateFormat))
      .append(log_texts::kFileExtension);
  if (WriteAtEnd(path, OPEN_ALWAYS, history) == Outcome::not_opened) {
    AppendErrorLine(log_texts::kCreationFailed);
  }
}

void SystemLog::AppendTo(const std::wstring& folder, const std::wstring& name) {
  const std::wstring path = folder + L"\\" + name;
  if (WriteAtEnd(path, OPEN_EXISTING, {}) != Outcome::not_opened) return;
  const std::optional<std::string> history = platform::ReadWholeFile(path, kHistoryLimit);
  const std::string lines = log_text::WithLf(history ? *history : log_texts::kHistoryFailed);
  CreateFileIn(folder, lines);
}

SystemLog::Outcome SystemLog::WriteAtEnd(const std::wstring& path, unsigned long disposition,
                                         std::string_view history) {
  const platform::UniqueFile file = platform::OpenForWriting(path, disposition);
  if (!file) return Outcome::not_opened;
  std::string bytes(history);
  bytes += platform::ToUtf8(log_text::Normalise(pending_));
  if (!platform::AppendAll(file.get(), log_text::WithCrLf(bytes))) {
    ReportException(GetLastError());
    return Outcome::failed;
  }
  pending_.clear();
  g_strCurrentLogFile = path;
  return Outcome::written;
}

void SystemLog::ReportException(unsigned long error) {
  AppendErrorLine(std::wstring(log_texts::kUpdateFailed).append(platform::SystemMessage(error)));
}
