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

/// Reads `key` of the section kSettingsSection; logs nothing.
OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key);
/// Writes "TRUE" or "FALSE"; a failure is ignored.
void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value);
/// Writes `value` to `key`, but only if `read_key` still reads as `read`. This second read happens while no
/// other process can change the file. Its result differs when the first read failed for a moment or another
/// process has changed the file since. A failure is ignored.
void RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value, const wchar_t* read_key,
                  OptionText read);
