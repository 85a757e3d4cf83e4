#pragma once

#include <string>
#include <string_view>

/// What the log's texts are made of.
namespace log_text {

/// Entries of the in-memory logs end in a blank line; in the file each stands on a line of its own: "\n\n\n"
/// becomes "\n", then "\n\n" becomes "\n", twice, one pass each over the whole text.
std::wstring Normalise(std::wstring text);

/// Puts `file_version` for every "NA" of `build_line`, wherever the line stands in `log`.
void ReplaceBuildLine(std::wstring& log, std::wstring_view build_line, std::wstring_view file_version);

/// "\n" as carriage return and line feed, as a file in text mode has it.
std::string WithCrLf(std::string_view text);
/// The lines of a file read in text mode: every line, whatever its end, followed by "\n".
std::string WithLf(std::string_view bytes);

/// Whether a file of the log folder belongs to this program, by its name (case-sensitive, anywhere in it).
bool IsLogFileName(std::wstring_view name);

}  // namespace log_text
