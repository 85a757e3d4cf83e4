#include "support/table.h"

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
    const bool escaped = text[i] == L'\\' && i + 1 < text.size();
    const std::size_t letter = escaped ? kLetters.find(Bytes(text.substr(i + 1, 1))) : kLetters.npos;
    if (!escaped) {
      result += text[i];
    } else if (letter != kLetters.npos) {
      result += kEscaped[letter];
      i += 1;
    } else {
      // Throws when it is no "u" with hexadecimal digits.
      result += static_cast<wchar_t>(std::stoi(Bytes(text.substr(i + 2, 4)), nullptr, 16));
      i += 5;
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
    Row& row = rows.emplace_back();
    for (const std::wstring& column : Split(std::wstring(line.begin(), line.end()), L';'))
      row.push_back(Unescape(column));
    if (row.size() < least || row.size() > most) Refuse("wrong number of columns", row[0]);
  }
  if (rows.empty()) throw std::invalid_argument(std::string("no rows in ") + file);
  return rows;
}
