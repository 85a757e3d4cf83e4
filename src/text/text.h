#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text helpers that use no locale and give the same result on every host.
namespace text {

/// `value` without the white space at both ends.
std::wstring_view Trim(std::wstring_view value);
/// Equality without regard to the case of the 26 Latin letters.
bool EqualsIgnoreCase(std::wstring_view left, std::wstring_view right);
/// True for "TRUE" and "FALSE" in any case, without blanks around them.
bool IsBooleanText(std::wstring_view value);
/// True for "TRUE" in any case.
bool IsTrueText(std::wstring_view value);

/// The number at the start of `value`: an optional sign and decimal digits up to the first other character. 0
/// when there is no digit; blanks before the number are not skipped. Values outside 32 bits saturate.
std::int32_t ParseDecimal(std::wstring_view value);
/// `value` in decimal digits, after a minus where it is negative. (std::to_wstring would link all of printf.)
std::wstring FormatDecimal(std::int64_t value);
/// `seconds` as milliseconds, saturating at 32 bits.
std::int32_t SecondsToMilliseconds(std::int32_t seconds);
/// ((a × 10 + b) × 10 + c) × 10 + d, saturating at 32 bits.
std::int32_t FoldVersion(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d);

/// Replaces every `from` in one pass from the start. An empty `from` replaces nothing.
void ReplaceAll(std::wstring& value, std::wstring_view from, std::wstring_view to);

/// A path cut at its last backslash. Without a backslash both parts are empty.
struct SplitPath {
  std::wstring_view folder;  ///< without the backslash
  std::wstring_view file;
};
SplitPath SplitAtLastBackslash(std::wstring_view path);

}  // namespace text
