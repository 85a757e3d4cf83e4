#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"

/// Copy of the build line that the last regular run header carried.
inline std::wstring g_strBuildLine;

/// The main sheet's running message text: what its checks logged and what its pages told the user.
class SheetLog : public LogSink {
 public:
  /// Adds `text` and "\n\n", or "\n" when `single`; an empty text adds nothing.
  void AppendSheetLine(std::wstring_view text, bool single = false);
  void Append(std::wstring_view entry) override { AppendSheetLine(entry); }

  /// Appends the header of a run started by the user; copies the build line into `g_strBuildLine`. Returns
  /// whether the process runs with administrator rights.
  bool WriteRegularRunHeader();
  /// As ActivityLog::ApplyBuildVersionToLog, on this log.
  void ApplyBuildVersionToLog(std::wstring_view file_version);

  void ClearSheetLog() { sheet_log_.clear(); }
  const std::wstring& SheetLogText() const { return sheet_log_; }

 private:
  std::wstring sheet_log_;
};
