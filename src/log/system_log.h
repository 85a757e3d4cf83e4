#pragma once

#include <string>
#include <string_view>

/// Full path of the log file that was last written successfully; empty until then.
inline std::wstring g_strCurrentLogFile;

/// A run's account in the dated log files under the common application data folder: what waits to be written,
/// in the order of events. Nothing here is ever shown to the user.
class SystemLog {
 public:
  /// The text that the run's first write puts before everything else. A later call replaces it until then;
  /// one after the first write has no effect, since a run has one header.
  void SetHeader(std::wstring_view header);
  /// Adds an entry and its separator to what the next write puts into the file.
  void AppendEntry(std::wstring_view entry) { pending_.append(entry).append(L"\n\n"); }
  /// Replaces the build line as log_rules::ReplaceBuildLine does, in the texts not written yet.
  void ApplyBuildVersion(std::wstring_view build_line, std::wstring_view file_version);
  /// Adds `text`, prefixed with the local time, as a line to the pending text and to the error text; an
  /// empty text adds nothing.
  void AppendErrorLine(std::wstring_view text);

  /// Writes what is pending, normalised, as UTF-8 without a mark and with CRLF, to the file that was written
  /// last (`g_strCurrentLogFile`); where that is none or cannot be opened, to the file that it finds or
  /// creates. After a successful write nothing is pending and `g_strCurrentLogFile` names the file. Nothing
  /// happens when nothing is pending. A folder that is missing or cannot be listed is silent; every other
  /// failure becomes an error line; what is pending stays so for the next call.
  void OpenSystemLog();

  std::wstring PendingText() const { return header_ + pending_; }
  const std::wstring& ErrorText() const { return error_text_; }

 private:
  enum class Outcome { written, not_opened, failed };

  void CreateFileIn(const std::wstring& folder, std::string_view history);
  void AppendTo(const std::wstring& folder, const std::wstring& name);
  Outcome WriteAtEnd(const std::wstring& path, unsigned long disposition, std::string_view history);
  void ReportException(unsigned long error);

  std::wstring header_;
  bool header_written_ = false;
  std::wstring pending_;
  std::wstring error_text_;
};
