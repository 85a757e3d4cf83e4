#include "text/text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace text {
namespace {

constexpr std::int64_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMax32 = std::numeric_limits<std::int32_t>::max();

std::int32_t Saturate(std::int64_t value) {
  return static_cast<std::int32_t>(std::clamp(value, kMin32, kMax32));
}

wchar_t ToLower(wchar_t c) {
  return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

}  // namespace

std::wstring_view Trim(std::wstring_view value, std::wstring_view blanks) {
  const std::size_t start = value.find_first_not_of(blanks);
  if (start == value.npos) return {};
  return value.substr(start, value.find_last_not_of(blanks) + 1 - start);
}

bool EqualsIgnoreCase(std::wstring_view left, std::wstring_view right) {
  return std::ranges::equal(left, right, {}, ToLower, ToLower);
}

bool IsTrueText(std::wstring_view value) {
  return EqualsIgnoreCase(value, L"TRUE");
}

bool IsBooleanText(std::wstring_view value) {
  return IsTrueText(value) || EqualsIgnoreCase(value, L"FALSE");
}

std::int32_t ParseDecimal(std::wstring_view value) {
  bool negative = false;
  if (!value.empty() && (value.front() == L'-' || value.front() == L'+')) {
    negative = value.front() == L'-';
    value.remove_prefix(1);
  }
  std::int64_t number = 0;
  for (wchar_t c : value) {
    if (c < L'0' || c > L'9') break;
    number = std::min(number * 10 + (c - L'0'), kMax32 + 1);
  }
  return Saturate(negative ? -number : number);
}

std::wstring FormatDecimal(std::int64_t value) {
  char digits[std::numeric_limits<std::int64_t>::digits10 + 2];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr};
}

std::int32_t SecondsToMilliseconds(std::int32_t seconds) {
  return Saturate(std::int64_t{seconds} * 1000);
}

std::int32_t FoldVersion(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
  return Saturate(std::int64_t{a} * 1000 + std::int64_t{b} * 100 + std::int64_t{c} * 10 + d);
}

SplitPath SplitAtLastBackslash(std::wstring_view path) {
  const std::size_t cut = path.rfind(L'\\');
  if (cut == std::wstring_view::npos) return {};
  return {.folder = path.substr(0, cut), .file = path.substr(cut + 1)};
}

}  // namespace text
