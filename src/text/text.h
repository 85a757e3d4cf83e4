#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

/// Text helpers that use no locale and give the same result on every host.
namespace text {

/// Unicode's White_Space property within the first plane; iswspace depends on the host.
inline constexpr std::wstring_view kWhiteSpace =
    L"\t\n\v\f\r \x85\xA0\x1680\x2000\x2001\x2002\x2003\x2004\x2005\x2006\x2007\x2008\x2009\x200A\x2028\x2029"
    L"\x202F\x205F\x3000";

/// `value` without the `blanks` at both ends.
std::wstring_view Trim(std::wstring_view value, std::wstring_view blanks = kWhiteSpace);
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
template <class Char>
void ReplaceAll(std::basic_string<Char>& value, std::type_identity_t<std::basic_string_view<Char>> from,
                std::type_identity_t<std::basic_string_view<Char>> to) {
  if (from.empty()) return;
  std::basic_string<Char> result;
  result.reserve(value.size());
  std::size_t start = 0;
  for (std::size_t found; (found = value.find(from, start)) != value.npos; start = found + from.size())
    result.append(value, start, found - start).append(to);
  if (start != 0) value = result.append(value, start);
}

/// A path cut at its last backslash. Without a backslash both parts are empty.
struct SplitPath {
  std::wstring_view folder;  ///< without the backslash
  std::wstring_view file;
};
SplitPath SplitAtLastBackslash(std::wstring_view path);

}  // namespace text
