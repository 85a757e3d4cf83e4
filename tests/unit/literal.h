#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// `value` as it stands in a table of these tests: readable in a failure, ready to be pasted as a new row.
inline std::string Literal(std::wstring_view value) {
  std::string result = "L\"";
  for (const wchar_t c : value) {
    const auto unit = static_cast<unsigned>(c);
    char escaped[16];
    const char* format = unit < 0x20 ? "\\%03o" : unit < 0x7F ? "%c" : unit <= 0xFFFF ? "\\u%04X" : "\\U%08X";
    if (c == L'"' || c == L'\\') format = "\\%c";
    std::snprintf(escaped, sizeof escaped, format, unit);
    result += escaped;
  }
  return result += '"';
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
