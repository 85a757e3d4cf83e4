#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::wstring_view kEscaped{L"\n\t\r\0\\", 5};
inline constexpr std::string_view kLetters = "ntr0\\";

/// The columns of one row of a table.
using Row = std::vector<std::wstring>;

/// Reads a table; `file` is named as below the tests' folder: "unit/rows.txt".
///
/// All tables of the tests have one form. They are ASCII; a line is a row. A line that begins with four
/// blanks continues the row above; empty lines, and lines that begin with '#', are no rows. ';' separates
/// columns, '|' the parts of a column. "\n", "\t", "\r", "\0", "\\", and "\u" with four hexadecimal digits,
/// are one character each; a semicolon within a column is "\u003B". All other blanks belong to the text.
///
/// An unknown escape, and fewer than `least` or more than `most` columns, are an exception that names the
/// row.
std::vector<Row> ReadTable(const char* file, std::size_t least, std::size_t most);
/// Throws the exception with which all readers of tables refuse what they do not know.
[[noreturn]] void Refuse(const char* why, std::wstring_view what);

/// `value` as a column of a table has it.
inline std::string Literal(std::wstring_view value) {
  std::string result;
  for (const wchar_t c : value) {
    const std::size_t letter = kEscaped.find(c);
    char text[16];
    const bool plain = c >= 0x20 && c < 0x7F && c != L';';
    std::snprintf(text, sizeof text,
                  letter != kEscaped.npos ? "\\%c"
                  : plain                 ? "%c"
                                          : "\\u%04X",
                  letter != kEscaped.npos ? kLetters[letter] : static_cast<int>(c));
    result += text;
  }
  return result;
}

/// The low byte of each character.
inline std::string Bytes(std::wstring_view text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

/// The parts of a column: "a|b" is two texts, the empty text none.
inline std::vector<std::wstring> Split(std::wstring_view joined, wchar_t separator = L'|') {
  std::vector<std::wstring> parts(joined.empty() ? 0 : 1);
  for (const wchar_t c : joined) {
    if (c != separator) parts.back() += c;
    if (c == separator) parts.emplace_back();
  }
  return parts;
}
