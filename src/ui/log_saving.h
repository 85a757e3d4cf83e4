#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The text and the file names of the log page, without its window.

/// `log` for an edit control: "\r\n" replaces "\n".
std::wstring EditText(std::wstring_view log);

/// The file that the log is saved to when the user has chosen `path`. Adds ".txt" when there is no extension.
/// Returns nothing when there is another extension; the comparison is case-sensitive.
std::optional<std::wstring> SavedLogPath(std::wstring_view path);
