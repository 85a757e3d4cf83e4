#pragma once

#include <cstdio>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::wstring_view kEscaped{L"\n\t\r\0\\", 5};
inline constexpr std::string_view kLetters = "ntr0\\";

/// `value` as it stands in a row of the tests' tables, ready to be pasted as a new one.
inline std::string Literal(std::wstring_view value) {
  std::string result;
  for (const wchar_t c : value) {
    const std::size_t letter = kEscaped.find(c);
    char text[16];
    const char* const format = letter != kEscaped.npos ? "\\%c" : c >= 0x20 && c < 0x7F ? "%c" : "\\u%04X";
    std::snprintf(text, sizeof text, format,
                  letter != kEscaped.npos ? kLetters[letter] : static_cast<int>(c));
    result += text;
  }
  return result;
}

/// Each character of `text` as one byte.
inline std::string Bytes(std::wstring_view text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

/// The lines of a table; one that begins with four blanks continues the line above.
inline std::vector<std::string> JoinedLines(std::istream& table) {
  constexpr std::string_view kContinued = "    ";
  std::vector<std::string> lines;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with(kContinued) && !lines.empty()) {
      lines.back() += line.substr(kContinued.size());
    } else {
      lines.push_back(line);
    }
  }
  return lines;
}

/// The parts of a list or of several arguments: "a|b" is two texts, the empty text none.
inline std::vector<std::wstring> Split(std::wstring_view joined, wchar_t bar = L'|') {
  std::vector<std::wstring> parts(joined.empty() ? 0 : 1);
  for (const wchar_t c : joined) {
    if (c != bar) parts.back() += c;
    if (c == bar) parts.emplace_back();
  }
  return parts;
}
