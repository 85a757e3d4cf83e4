#include "console/terminal.h"

#include <algorithm>
#include <cstdio>

#include "console/encoding.h"

namespace console {
namespace {

struct Range {
  unsigned first, last;
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

bool IsIn(const Range& range, wchar_t unit) {
  const unsigned c = static_cast<unsigned>(unit) & 0xFFFF;
  return range.first <= c && c <= range.last;
}

}  // namespace

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
    const unsigned c = static_cast<unsigned>(text[i]) & 0xFFFF;
    char escape[8];
    std::snprintf(escape, sizeof escape, c < 0x100 ? "\\x%02X" : "\\u%04X", c);
    result.append(Utf8(text.substr(plain, i - plain))).append(escape);
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
