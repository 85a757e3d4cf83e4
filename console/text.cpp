#include "console/text.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iterator>

namespace console {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Range {
  char32_t first, last;
};

/// Unicode's categories Cc, Cf, Zl and Zp within the first plane, the variation selectors, and the blank
/// fillers of Hangul.
constexpr Range kControls[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x00AD, 0x00AD}, {0x034F, 0x034F}, {0x0600, 0x0605},
    {0x061C, 0x061C}, {0x06DD, 0x06DD}, {0x070F, 0x070F}, {0x0890, 0x0891}, {0x08E2, 0x08E2},
    {0x115F, 0x1160}, {0x180B, 0x180F}, {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},
    {0x3164, 0x3164}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB},
};
/// High surrogates of U+E0000 to U+E0FFF: tags and variation selectors, which are invisible too.
constexpr Range kTagSurrogates = {0xDB40, 0xDB43};

char32_t Unit(wchar_t unit) {
  return static_cast<char32_t>(unit) & 0xFFFF;
}

char32_t Byte(char byte) {
  return static_cast<unsigned char>(byte);
}

bool IsIn(const Range& range, wchar_t unit) {
  return range.first <= Unit(unit) && Unit(unit) <= range.last;
}

/// `c` as "\xNN" or, from 0x100 on, "\uNNNN".
std::string Escape(char32_t c) {
  char escape[8];
  std::snprintf(escape, sizeof escape, c < 0x100 ? "\\x%02X" : "\\u%04X", static_cast<unsigned>(c));
  return escape;
}

std::wstring DecodeUtf8(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  for (auto rest = bytes.begin();;) {
    const auto invalid = utf8::find_invalid(rest, bytes.end());
    utf8::utf8to16(rest, invalid, std::back_inserter(text));
    if (invalid == bytes.end()) return text;
    text += static_cast<wchar_t>(0xDC00 + Byte(*invalid));
    rest = invalid + 1;
  }
}

std::wstring DecodeUtf16(std::string_view bytes, bool little_endian) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const std::size_t high = little_endian ? i + 1 : i;
    text += static_cast<wchar_t>(Byte(bytes[high]) << 8 | Byte(bytes[i + i + 1 - high]));
  }
  return text;
}

}  // namespace

std::wstring DecodeText(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return DecodeUtf16(bytes.substr(2), true);
  if (bytes.starts_with("\xFE\xFF")) return DecodeUtf16(bytes.substr(2), false);
  return DecodeUtf8(bytes.starts_with("\xEF\xBB\xBF") ? bytes.substr(3) : bytes);
}

std::string Utf8(std::wstring_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t c = Unit(text[i]), next = i + 1 < text.size() ? Unit(text[i + 1]) : 0;
    if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
      utf8::append(0x10000 + ((c & 0x3FF) << 10) + (next & 0x3FF), std::back_inserter(result));
      ++i;
    } else if (c >= 0xDC80 && c <= 0xDCFF) {
      result += Escape(c & 0xFF);
    } else {
      utf8::append(c >= 0xD800 && c < 0xE000 ? kReplacement : c, std::back_inserter(result));
    }
  }
  return result;
}

bool IsControl(wchar_t unit) {
  return IsIn(kTagSurrogates, unit) || std::any_of(std::begin(kControls), std::end(kControls),
                                                   [&](const Range& range) { return IsIn(range, unit); });
}

std::string Printable(std::wstring_view text) {
  std::string result;
  std::size_t plain = 0;  // start of the text that is not in the result yet
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool second_of_tag = i > 0 && IsIn(kTagSurrogates, text[i - 1]);
    if (!IsControl(text[i]) && !second_of_tag) continue;
    result.append(Utf8(text.substr(plain, i - plain))).append(Escape(Unit(text[i])));
    plain = i + 1;
  }
  return result + Utf8(text.substr(plain));
}

std::string Printable(std::string_view bytes) {
  return Printable(DecodeText(bytes));
}

std::string PrintablePath(const std::filesystem::path& path) {
#ifdef _WIN32
  return Printable(std::wstring_view(path.native()));
#else
  return Printable(std::string_view(path.native()));
#endif
}

}  // namespace console
