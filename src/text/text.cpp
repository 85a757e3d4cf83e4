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

// Unicode's White_Space property within the first plane; iswspace depends on the host.
bool IsWhiteSpace(wchar_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

bool IsDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

wchar_t ToLower(wchar_t c) {
  return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

}  // namespace

std::wstring_view Trim(std::wstring_view value) {
  while (!value.empty() && IsWhiteSpace(value.front())) value.remove_prefix(1);
  while (!value.empty() && IsWhiteSpace(value.back())) value.remove_suffix(1);
  return value;
}

bool EqualsIgnoreCase(std::wstring_view left, std::wstring_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](wchar_t a, wchar_t b) { return ToLower(a) == ToLower(b); });
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
    if (!IsDigit(c)) break;
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

void ReplaceAll(std::wstring& value, std::wstring_view from, std::wstring_view to) {
  if (from.empty()) return;
  std::wstring result;
  std::size_t start = 0;
  for (std::size_t found; (found = value.find(from, start)) != std::wstring::npos;) {
    result.append(value, start, found - start).append(to);
    start = found + from.size();
  }
  if (start != 0) value = result.append(value, start);
}

SplitPath SplitAtLastBackslash(std::wstring_view path) {
  const std::size_t cut = path.rfind(L'\\');
  if (cut == std::wstring_view::npos) return {};
  return {.folder = path.substr(0, cut), .file = path.substr(cut + 1)};
}

}  // namespace text
