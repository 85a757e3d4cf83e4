#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Rules of the log that call no function of Windows: the format of its text, and the choice of the file.
namespace log_rules {

/// Removes the blank lines between the entries of a log: replaces "\n\n\n" by "\n", then "\n\n" by "\n"
/// twice, in one pass each over the whole text.
std::wstring Normalise(std::wstring text);

/// Replaces every `build_line` in `log` by that line with `file_version` in place of "NA".
void ReplaceBuildLine(std::wstring& log, std::wstring_view build_line, std::wstring_view file_version);

/// Replaces "\n" by "\r\n", as text mode does when it writes a file.
std::string WithCrLf(std::string text);
/// Replaces "\r\n" by "\n", as text mode does when it reads a file, and ends the last line with "\n".
std::string WithLf(std::string text);

/// Whether a file's name contains the prefix of this program's log files, case-sensitive, at any position.
bool IsLogFileName(std::wstring_view name);

/// A file of the log folder.
struct LogFileEntry {
  std::wstring name;
  std::uint64_t last_write = 0;  ///< in any unit that grows with time
};

/// Returns the index of the file that a run's log is appended to: the newest one, and of equally new ones the
/// last. `files` is in enumeration order. Returns nothing when the caller has to create a file: `files` is
/// empty, or consists of two files with the same time.
std::optional<std::size_t> ChooseLogFile(const std::vector<LogFileEntry>& files);

}  // namespace log_rules
