#include "log/activity_log.h"

#include <initializer_list>

#include "log/log_rules.h"
#include "log/log_texts.h"
#include "platform/administrator.h"
#include "platform/system_text.h"
#include "product/identity.h"

namespace {

/// The product label followed by " Build Version : NA".
std::wstring InitialBuildLine() {
  return std::wstring(identity::kProductLabel).append(log_texts::kBuildVersion);
}

/// The six entries at the head of a run's log, each followed by "\n\n". `invoke_mode` is the end of the last
/// entry. Contains the local time.
std::wstring RunHeader(bool administrator, std::wstring_view invoke_mode) {
  std::wstring header;
  const auto add = [&header](std::initializer_list<std::wstring_view> parts) {
    for (const std::wstring_view part : parts) header += part;
    header += L"\n\n";
  };
  add({log_texts::kHeaderRule});
  add({identity::kWindowTitle, log_texts::kFileVersion, g_strProgramFileVersion});
  add({identity::kWindowTitle, log_texts::kDateTime, platform::FormatLocalTime(log_texts::kDateTimeFormat)});
  add({InitialBuildLine()});
  add({log_texts::kHeaderRule});
  add({log_texts::kAppMode, administrator ? log_texts::kAdmin : log_texts::kUser, log_texts::kUserMode,
       invoke_mode});
  return header;
}

}  // namespace

void ActivityLog::AppendLogLine(std::wstring_view text) {
  log_text_.append(text).append(L"\n\n");
  dated_log_.AppendEntry(text);
}

void ActivityLog::AppendNote(std::wstring_view text) {
  notes_text_.append(text).append(L"\n");
}

void ActivityLog::WriteRunHeader() {
  administrator_ = platform::IsRunningAsAdmin();
  build_line_ = InitialBuildLine();
  const std::wstring header = RunHeader(administrator_, log_texts::kInvokedByProduct);
  log_text_ += header;
  dated_log_.SetHeader(header);
}

void ActivityLog::ApplyBuildVersionToLog(std::wstring_view file_version) {
  log_rules::ReplaceBuildLine(log_text_, build_line_, file_version);
  dated_log_.ApplyBuildVersion(build_line_, file_version);
}

void SheetLog::AppendSheetLine(std::wstring_view text, bool single) {
  if (text.empty()) return;
  sheet_log_.append(text).append(single ? L"\n" : L"\n\n");
}

void SheetLog::Append(std::wstring_view entry) {
  if (entry.empty()) return;
  AppendSheetLine(entry);
  dated_log_.AppendEntry(entry);
}

bool SheetLog::WriteRegularRunHeader() {
  const bool administrator = platform::IsRunningAsAdmin();
  g_strBuildLine = InitialBuildLine();
  const std::wstring header = RunHeader(administrator, log_texts::kInvokedByUser);
  sheet_log_ += header;
  dated_log_.SetHeader(header);
  return administrator;
}

void SheetLog::ApplyBuildVersionToLog(std::wstring_view file_version) {
  log_rules::ReplaceBuildLine(sheet_log_, g_strBuildLine, file_version);
  dated_log_.ApplyBuildVersion(g_strBuildLine, file_version);
}
