#pragma once

#include <string>
#include <string_view>

/// Full path of the log file that was last written successfully; empty until then.
inline std::wstring g_strCurrentLogFile;

/// Writes the log of a run to the dated log files under the common application data folder. Holds the text
/// that is not written yet, in the order of events. Never shows anything to the user.
class SystemLog {
 public:
  /// Sets the text that the run's first write puts before everything else. A later call replaces it until
  /// that write; afterwards a call has no effect, because a run has one header.
  void SetHeader(std::wstring_view header);
  /// Adds an entry and "\n\n" to the pending text.
  void AppendEntry(std::wstring_view entry) { pending_.append(entry).append(L"\n\n"); }
  /// Calls log_rules::ReplaceBuildLine for the pending header.
  void ApplyBuildVersion(std::wstring_view build_line, std::wstring_view file_version);
  /// Adds `text`, prefixed with the local time, as a line to the pending text and to the error text; an
  /// empty text adds nothing.
  void AppendErrorLine(std::wstring_view text);

  /// Writes header and pending text, normalised, as UTF-8 without a byte order mark and with CR LF. Writes to
  /// `g_strCurrentLogFile`; when that is empty or cannot be opened, finds or creates the log file. After a
  /// successful write nothing is pending and `g_strCurrentLogFile` names the file. Does nothing when nothing
  /// is pending. Ignores a folder that is missing or cannot be listed; any other failure becomes an error
  /// line. After a failure the text stays pending for the next call.
  void OpenSystemLog();

  std::wstring PendingText() const { return header_ + pending_; }
  const std::wstring& ErrorText() const { return error_text_; }

 private:
  enum class Outcome { written, not_opened, failed };

  /// Writes `history` (UTF-8, LF) and the pending text to the end of the file `name`, which may exist.
  void CreateFileIn(const std::wstring& folder, const std::wstring& name, std::string_view history);
  /// Appends to the file. When it cannot be opened for writing, copies its content to a new file instead,
  /// unless a new file would have the same name.
  void AppendTo(const std::wstring& folder, const std::wstring& name);
  /// Appends to `path`. Reports a failed write, but not a file that cannot be opened.
  Outcome WriteAtEnd(const std::wstring& path, unsigned long disposition, std::string_view history);
  void ReportFailure(unsigned long error);

  std::wstring header_;
  bool header_written_ = false;
  std::wstring pending_;
  std::wstring error_text_;
};
