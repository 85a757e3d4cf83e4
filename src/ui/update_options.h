#pragma once

#include <string>

/// What the settings file says of one of the two update options.
enum class OptionText { missing, yes, no, malformed };

/// `key` is a key of the program's section. A value of blanks counts as missing, as does one that cannot be
/// read.
OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key);
/// Writes "TRUE" or "FALSE"; a failure is not reported.
void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value);
