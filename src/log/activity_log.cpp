#include "log/activity_log.h"

#include <initializer_list>

#include "log/log_rules.h"
#include "log/log_texts.h"
#include "platform/administrator.h"
#include "platform/system_text.h"
#include "product/identity.h"

std::wstring InitialBuildLine() {
  return std::wstring(identity::kProductLabel).append(log_texts::kBuildVersion);
}

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
