#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support {

std::string Utf8(std::wstring_view text);
/// The parts between the separators; one empty part for an empty text.
std::vector<std::wstring> Split(std::wstring_view text, wchar_t separator);

/// Empty when `log` is exactly these entries, each followed by "\n\n"; else which one differs, and how.
/// For CHECK(LogDifference(...) == "").
std::string LogDifference(std::wstring_view log, const std::vector<std::wstring>& expected);

}  // namespace support
