#include "log/activity_log.h"

#include "log/log_rules.h"
#include "log/log_texts.h"
#include "log/run_header.h"
#include "platform/administrator.h"

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
