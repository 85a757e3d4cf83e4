#include "console/encoding.h"

#include <array>
#include <cstddef>

namespace console {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";
constexpr char32_t kReplacement = 0xFFFD;

char32_t ByteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

void AppendUnits(char32_t c, std::wstring& text) {
  if (c >= 0x10000) {
    text += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
    c = 0xDC00 + (c & 0x3FF);
  }
  text += static_cast<wchar_t>(c);
}

/// Decodes the UTF-8 sequence at the start of `bytes`, which must not be empty. Returns its length, or 0 when
/// it is malformed: cut, overlong, a surrogate or above U+10FFFF.
std::size_t DecodeSequence(std::string_view bytes, char32_t& c) {
  c = ByteAt(bytes, 0);
  if (c < 0x80) return 1;
  const std::size_t length = c < 0xC0 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF8 ? 4 : 0;
  if (length == 0 || bytes.size() < length) return 0;
  c &= 0x7Fu >> length;
  for (std::size_t i = 1; i < length; ++i) {
    const char32_t tail = ByteAt(bytes, i);
    if ((tail & 0xC0) != 0x80) return 0;
    c = c << 6 | (tail & 0x3F);
  }
  constexpr std::array<char32_t, 5> kLowest = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = c >= 0xD800 && c < 0xE000;
  return c < kLowest[length] || surrogate || c > 0x10FFFF ? 0 : length;
}

std::wstring DecodeUtf8(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    char32_t c = 0;
    const std::size_t length = DecodeSequence(bytes, c);
    AppendUnits(length == 0 ? 0xDC00 + ByteAt(bytes, 0) : c, text);
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::wstring DecodeUtf16(std::string_view bytes, bool little_endian) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const std::size_t high = little_endian ? i + 1 : i;
    text += static_cast<wchar_t>(ByteAt(bytes, high) << 8 | ByteAt(bytes, i + i + 1 - high));
  }
  return text;
}

void AppendUtf8(char32_t c, std::string& result) {
  const auto add = [&](char32_t byte) { result += static_cast<char>(byte); };
  if (c < 0x80) return add(c);
  if (c < 0x800) {
    add(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      add(0xE0 | c >> 12);
    } else {
      add(0xF0 | c >> 18);
      add(0x80 | (c >> 12 & 0x3F));
    }
    add(0x80 | (c >> 6 & 0x3F));
  }
  add(0x80 | (c & 0x3F));
}

}  // namespace

std::wstring DecodeText(std::string_view bytes) {
  if (bytes.starts_with(kUtf16LittleMark)) return DecodeUtf16(bytes.substr(2), true);
  if (bytes.starts_with(kUtf16BigMark)) return DecodeUtf16(bytes.substr(2), false);
  return DecodeUtf8(bytes.starts_with(kUtf8Mark) ? bytes.substr(kUtf8Mark.size()) : bytes);
}

std::string Utf8(std::wstring_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t c = static_cast<char32_t>(text[i]) & 0xFFFF;
    const char32_t next = i + 1 < text.size() ? static_cast<char32_t>(text[i + 1]) & 0xFFFF : 0;
    if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
      AppendUtf8(0x10000 + ((c & 0x3FF) << 10) + (next & 0x3FF), result);
      ++i;
    } else if (c >= 0xDC80 && c <= 0xDCFF) {
      result += {'\\', 'x', kDigits[c >> 4 & 0xF], kDigits[c & 0xF]};
    } else {
      AppendUtf8(c >= 0xD800 && c < 0xE000 ? kReplacement : c, result);
    }
  }
  return result;
}

}  // namespace console
