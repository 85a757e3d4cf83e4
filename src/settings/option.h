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

OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key);
/// Writes "TRUE" or "FALSE"; a failure is ignored.
void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value);
/// Writes `key` because `read_key` was read as `read`. Reads `read_key` again while no other process can
/// change the file, and writes nothing if it differs: the first read had failed, or the file has changed. A
/// failure is ignored.
void RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value, const wchar_t* read_key,
                  OptionText read);
