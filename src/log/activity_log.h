#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "log/system_log.h"

/// File version of this program from its own version resource, e.g. "2.0.3.0"; empty until start-up read it.
inline std::wstring g_strProgramFileVersion;

/// The application's own in-memory account of a run; nothing truncates it. Owns the run's dated log, which
/// gets every entry too.
class ActivityLog : public LogSink {
 public:
  /// Adds `text` and "\n\n"; an empty text adds the separator all the same.
  void AppendLogLine(std::wstring_view text);
  /// Adds `text` and "\n" to the notes.
  void AppendNote(std::wstring_view text);
  void Append(std::wstring_view entry) override { AppendLogLine(entry); }

  /// Appends the run header and sets the administrator flag and the build line.
  void WriteRunHeader();
  /// Puts `file_version` in the place of "NA" wherever the build line stands in the log and in what the dated
  /// log has not written yet. The build line itself keeps its text, so a later call finds nothing to replace.
  void ApplyBuildVersionToLog(std::wstring_view file_version);

  const std::wstring& LogText() const { return log_text_; }
  const std::wstring& NotesText() const { return notes_text_; }
  bool IsAdministrator() const { return administrator_; }
  const std::wstring& BuildLine() const { return build_line_; }
  SystemLog& DatedLog() { return dated_log_; }

 private:
  std::wstring log_text_;
  std::wstring notes_text_;
  std::wstring build_line_;
  SystemLog dated_log_;
  bool administrator_ = false;
};
