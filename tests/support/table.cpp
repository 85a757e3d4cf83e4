#include "support/table.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

std::wstring Unescape(const std::wstring& text) {
  std::wstring result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != L'\\') {
      result += text[i];
      continue;
    }
    const std::string code = Bytes(text.substr(i + 1, 5));
    const std::size_t letter = kLetters.find(code.substr(0, 1));
    if (!code.empty() && letter != kLetters.npos) {
      result += kEscaped[letter];
      ++i;
    } else if (std::regex_match(code, std::regex("u[0-9A-F]{4}"))) {
      result += static_cast<wchar_t>(std::stoi(code.substr(1), nullptr, 16));
      i += 5;
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
  std::ifstream table(std::filesystem::path(TAVREL_TESTS) / file);
  const std::string text(std::istreambuf_iterator<char>(table), {});
  std::istringstream lines(std::regex_replace(text, std::regex("\n    "), ""));
  std::vector<Row> rows;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::wstring wide(line.begin(), line.end());
    if (std::any_of(line.begin(), line.end(), [](char c) { return c < 0; })) Refuse("not ASCII", wide);
    Row& row = rows.emplace_back();
    for (const std::wstring& column : Split(wide, L';')) row.push_back(Unescape(column));
    if (row.size() < least || row.size() > most) Refuse("wrong number of columns", row[0]);
  }
  if (rows.empty()) throw std::invalid_argument(std::string("no rows in ") + file);
  return rows;
}
