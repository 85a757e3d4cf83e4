#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"

class SystemLog;

/// Copy of the build line that the last regular run header carried.
inline std::wstring g_strBuildLine;

/// The main sheet's running message text: what its checks logged and what its pages showed the user.
class SheetLog : public LogSink {
 public:
  /// `dated_log` outlives this log.
  explicit SheetLog(SystemLog& dated_log) : dated_log_(dated_log) {}

  /// Adds `text` and "\n\n", or "\n" when `single`; an empty text adds nothing. The dated log does not get
  /// it: for texts that the dated log has from another log already.
  void AppendSheetLine(std::wstring_view text, bool single = false);
  /// AppendSheetLine, and the same for the dated log.
  void Append(std::wstring_view entry) override;

  /// Appends the header of a run started by the user and makes it the dated log's; copies the build line into
  /// `g_strBuildLine`. Returns whether the process runs with administrator rights.
  bool WriteRegularRunHeader();
  /// As ActivityLog::ApplyBuildVersionToLog, on this log.
  void ApplyBuildVersionToLog(std::wstring_view file_version);

  void ClearSheetLog() { sheet_log_.clear(); }
  const std::wstring& SheetLogText() const { return sheet_log_; }

 private:
  SystemLog& dated_log_;
  std::wstring sheet_log_;
};
