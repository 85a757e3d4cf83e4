#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "log/system_log.h"

/// File version of this program from its own version resource, e.g. "2.0.3.0"; empty until it is read.
inline std::wstring g_strProgramFileVersion;
/// Build line of the last regular run header.
inline std::wstring g_strBuildLine;

/// The application's in-memory log of a run; it is never truncated. Owns the run's dated log, which also gets
/// every entry.
class ActivityLog : public LogSink {
 public:
  /// Adds `text` and "\n\n" to this log and to the dated log, also when `text` is empty.
  void AppendLogLine(std::wstring_view text);
  /// Adds `text` and "\n" to the notes: the entries about the settings file. The program does not show them.
  void AppendNote(std::wstring_view text);
  void Append(std::wstring_view entry) override { AppendLogLine(entry); }

  /// Appends the run header and sets the administrator flag and the build line.
  void WriteRunHeader();
  /// Replaces "NA" by `file_version` in every build line of the log and of the dated log's pending header.
  /// The next call looks for the same line and finds none.
  void ApplyBuildVersionToLog(std::wstring_view file_version);

  const std::wstring& LogText() const { return log_text_; }
  const std::wstring& NotesText() const { return notes_text_; }
  bool IsAdministrator() const { return administrator_; }
  SystemLog& DatedLog() { return dated_log_; }

 private:
  std::wstring log_text_;
  std::wstring notes_text_;
  std::wstring build_line_;
  SystemLog dated_log_;
  bool administrator_ = false;
};

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
