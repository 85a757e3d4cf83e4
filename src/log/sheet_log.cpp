#include "log/sheet_log.h"

#include "log/administrator.h"
#include "log/log_text.h"
#include "log/log_texts.h"
#include "log/run_header.h"

void SheetLog::AppendSheetLine(std::wstring_view text, bool single) {
  if (text.empty()) return;
  sheet_log_.append(text).append(single ? L"\n" : L"\n\n");
}

bool SheetLog::WriteRegularRunHeader() {
  const bool administrator = IsRunningAsAdmin();
  g_strBuildLine = InitialBuildLine();
  for (const std::wstring& line : RunHeaderLines(administrator, log_texts::kInvokedByUser)) {
    AppendSheetLine(line);
  }
  return administrator;
}

void SheetLog::ApplyBuildVersionToLog(std::wstring_view file_version) {
  log_text::ReplaceBuildLine(sheet_log_, g_strBuildLine, file_version);
}
