#pragma once

#include <string>
#include <string_view>

/// Full path of the log file that was last written successfully; empty until then.
inline std::wstring g_strCurrentLogFile;

/// The dated log files under the common application data folder, and the text that waits to go into them.
/// Nothing here is ever shown to the user.
class SystemLog {
 public:
  /// Adds a run's log text to what the next write puts into the file.
  void AppendText(std::wstring_view text) { pending_ += text; }
  /// Adds `text`, prefixed with the local time, as a line to the pending text and to the error text; an
  /// empty text adds nothing.
  void AppendErrorLine(std::wstring_view text);

  /// Finds or creates the log file and writes the pending text to it, normalised, as UTF-8 without a mark and
  /// with CRLF. After a successful write the pending text is empty and `g_strCurrentLogFile` names the file.
  /// A folder that is missing or cannot be listed is silent; every other failure becomes an error line; the
  /// pending text stays.
  void OpenSystemLog();

  const std::wstring& PendingText() const { return pending_; }
  const std::wstring& ErrorText() const { return error_text_; }

 private:
  enum class Outcome { written, not_opened, failed };

  void CreateFileIn(const std::wstring& folder, std::string_view history);
  void AppendTo(const std::wstring& folder, const std::wstring& name);
  Outcome WriteAtEnd(const std::wstring& path, unsigned long disposition, std::string_view history);
  void ReportException(unsigned long error);

  std::wstring pending_;
  std::wstring error_text_;
};
