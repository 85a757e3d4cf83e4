#pragma once

#include <string>

/// The value of a settings key that should be "TRUE" or "FALSE" (in any case, with or without blanks around
/// it).
enum class OptionText {
  missing,    ///< no such key, only blanks, or a file that cannot be read at this moment
  malformed,  ///< any other text
  yes,
  no
};

/// The value of `key`, not trimmed, at most 511 characters.
std::wstring ReadSetting(const std::wstring& settings_file, const wchar_t* key);
/// Reads a key that should be an option; logs nothing.
OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key);
/// As ReadOption; replaces a missing or malformed value by `value`, as RepairOption does.
OptionText ReadOptionOrRepair(const std::wstring& settings_file, const wchar_t* key, bool value);
/// Writes "TRUE" or "FALSE"; a failure is ignored.
void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value);
/// Writes `value` to `key` unless `read_key` no longer reads as `read`: it is read again while no other
/// process can write to the file, because the first reading can have failed or be out of date. Returns what
/// the second reading found; `read` when the file cannot be locked. A failure to write is ignored.
OptionText RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value,
                        const wchar_t* read_key, OptionText read);
