#include "support/table.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

std::wstring Unescape(const std::string& text) {
  std::wstring result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] < 0) Refuse("not ASCII", result);
    if (text[i] != '\\') {
      result += static_cast<wchar_t>(text[i]);
      continue;
    }
    const std::size_t letter = kLetters.find(text.substr(i + 1, 1));
    const std::string digits = text.substr(i + 1, 5);
    unsigned code = 0;
    if (digits.size() == 5 && digits[0] == 'u' &&
        std::from_chars(&digits[1], &digits[1] + 4, code, 16).ptr == &digits[1] + 4) {
      result += static_cast<wchar_t>(code);
      i += 5;
    } else if (!digits.empty() && letter != kLetters.npos) {
      result += kEscaped[letter];
      ++i;
    } else {
      Refuse("unknown escape after", result);
    }
  }
  return result;
}

}  // namespace

void Refuse(const char* why, std::wstring_view what) {
  throw std::invalid_argument(std::string(why) + ": " + Literal(what));
}

std::vector<Row> ReadTable(const char* file, std::size_t least, std::size_t most) {
  constexpr std::string_view kContinued = "    ";
  std::ifstream table(std::filesystem::path(TAVREL_TESTS) / file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with(kContinued) && !lines.empty()) {
      lines.back() += line.substr(kContinued.size());
    } else {
      lines.push_back(line);
    }
  }
  std::vector<Row> rows;
  for (const std::string& line : lines) {
    if (line.empty() || line[0] == '#') continue;
    Row& row = rows.emplace_back();
    for (std::size_t begin = 0, end = 0; end != line.npos; begin = end + 1) {
      end = line.find(';', begin);
      row.push_back(Unescape(line.substr(begin, end == line.npos ? end : end - begin)));
    }
    if (row.size() < least || row.size() > most) Refuse("wrong number of columns", row[0]);
  }
  if (rows.empty()) throw std::invalid_argument(std::string("no rows in ") + file);
  return rows;
}
