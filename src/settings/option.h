#pragma once

#include <string>

/// How a key of the settings file that is "TRUE" or "FALSE" (any case, blanks around it) reads.
enum class OptionText {
  missing,    ///< no such key, no text but blanks, or a file that cannot be read at this moment
  malformed,  ///< any other text
  yes,
  no
};

OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key);
/// Writes "TRUE" or "FALSE"; a failure is ignored.
void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value);
/// Writes `key` because `read_key` was read as `read`. Writes nothing if it reads differently when no other
/// process can change the file: it could not be read before, or was changed since.
void RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value, const wchar_t* read_key,
                  OptionText read);
