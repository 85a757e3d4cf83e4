#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The log page's texts and names, apart from its window.

/// `log` as an edit control shows it: "\n" as carriage return and line feed.
std::wstring EditText(std::wstring_view log);

/// The file that the log is saved to when the user chose `path`: ".txt" is added when there is no extension.
/// Nothing when there is another one; the comparison is case-sensitive.
std::optional<std::wstring> SavedLogPath(std::wstring_view path);
