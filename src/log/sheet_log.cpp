#include "log/sheet_log.h"

#include "log/activity_log.h"
#include "log/log_rules.h"
#include "log/log_texts.h"
#include "log/system_log.h"
#include "platform/administrator.h"

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
