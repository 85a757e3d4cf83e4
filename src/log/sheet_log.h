#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"

class SystemLog;

/// Build line of the last regular run header.
inline std::wstring g_strBuildLine;

/// The main sheet's log: the entries of its checks and the failure messages of its pages.
class SheetLog : public LogSink {
 public:
  /// `dated_log` outlives this log.
  explicit SheetLog(SystemLog& dated_log) : dated_log_(dated_log) {}

  /// Adds `text` and "\n\n", or "\n" when `single`; an empty text adds nothing. Does not write to the dated
  /// log, for texts that the dated log already has.
  void AppendSheetLine(std::wstring_view text, bool single = false);
  /// Adds `entry` and "\n\n" to this log and to the dated log; an empty entry adds nothing.
  void Append(std::wstring_view entry) override;

  /// Appends the header of a run started by the user, sets it as the dated log's header, and copies its build
  /// line to `g_strBuildLine`. Returns whether the process has administrator rights.
  bool WriteRegularRunHeader();
  /// As ActivityLog::ApplyBuildVersionToLog, on this log.
  void ApplyBuildVersionToLog(std::wstring_view file_version);

  void ClearSheetLog() { sheet_log_.clear(); }
  const std::wstring& SheetLogText() const { return sheet_log_; }

 private:
  SystemLog& dated_log_;
  std::wstring sheet_log_;
};
