#include "support/table.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "text/text.h"

namespace {

std::wstring Unescape(const std::string& text) {
  constexpr std::string_view letters = "ntr0\\";
  std::wstring result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      result += static_cast<wchar_t>(text[i]);
    } else if (const std::size_t letter = letters.find(text[i + 1]); letter != letters.npos) {
      result += L"\n\t\r\0\\"[letter];
      i += 1;
    } else {
      // Throws when it is no "u" with hexadecimal digits.
      result += static_cast<wchar_t>(std::stoi(text.substr(i + 2, 4), nullptr, 16));
      i += 5;
    }
  }
  return result;
}

}  // namespace

std::vector<Row> ReadTable(const char* file) {
  std::ifstream table(std::filesystem::path(TAVREL_TESTS) / file);
  std::vector<Row> rows;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t end = line.find(';');
    rows.push_back({Unescape(line.substr(0, end)), Unescape(line.substr(end + 1))});
  }
  if (rows.empty()) throw std::invalid_argument(std::string("no rows in ") + file);
  return rows;
}

Decision DecideFor(std::wstring_view input) {
  std::vector<std::wstring> sections = Split(input);
  const std::wstring record = sections[0], version = sections[1], level = sections[2], build = sections[3];
  sections.erase(sections.begin(), sections.begin() + 4);
  LatestPack latest;
  FindLatestPack(sections, latest);
  CheckFacts facts{.sections = sections,
                   .latest = latest,
                   .record = record,
                   .record_version = ParseRecordVersion(record).value_or(0),
                   .product_version = text::ParseDecimal(version),
                   .product_level = level,
                   .product_build = build};
  if (record == L"-") facts.record.reset();
  return Decide(facts);
}

std::string Literal(std::wstring_view value) {
  std::string result;
  for (const wchar_t c : value) {
    const bool plain = c >= 0x20 && c < 0x7F && c != L';' && c != L'\\';
    char text[16];
    std::snprintf(text, sizeof text, plain ? "%c" : "\\u%04X", static_cast<unsigned>(c));
    result += text;
  }
  return result;
}

std::string Bytes(std::wstring_view text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

std::vector<std::wstring> Split(std::wstring_view joined, wchar_t separator) {
  std::vector<std::wstring> parts(joined.empty() ? 0 : 1);
  for (const wchar_t c : joined) {
    if (c != separator) parts.back() += c;
    if (c == separator) parts.emplace_back();
  }
  return parts;
}
