#include "unit.h"

#include <doctest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "literal.h"

namespace {

std::wstring Unescape(std::string_view text) {
  std::wstring result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped = text[i] == '\\';
    if (escaped) ++i;
    const std::size_t letter = escaped ? kLetters.find(text[i]) : kLetters.npos;
    if (letter != kLetters.npos) {
      result += kEscaped[letter];
    } else if (escaped) {  // "\u" and four digits
      result += static_cast<wchar_t>(std::stoi(std::string(text.substr(i + 1, 4)), nullptr, 16));
      i += 4;
    } else {
      result += static_cast<wchar_t>(text[i]);
    }
  }
  return result;
}

}  // namespace

void CheckRows(const char* name, std::wstring (*function)(std::wstring_view)) {
  const std::string heading = std::string("[") + name + ": ";
  std::ifstream file(std::filesystem::path(TAVREL_ROWS), std::ios::binary);
  INFO("table ", heading);
  unsigned rows = 0;
  bool here = false;
  for (const std::string& line : JoinedLines(file)) {
    const std::size_t arrow = line.rfind(" =>");
    if (line.starts_with("[") && arrow == line.npos) here = line.starts_with(heading);
    if (!here || line[0] == '#' || arrow == line.npos) continue;
    INFO("row ", line);
    const std::string_view expected = std::string_view(line).substr(arrow + 3);
    const std::wstring result = function(Unescape(line.substr(0, arrow)));
    // Failures show texts as rows have them.
    CHECK(Literal(result) == Literal(Unescape(expected.substr(expected.starts_with(' ')))));
    ++rows;
  }
  REQUIRE(rows > 0);
}

std::vector<std::string> TableNames() {
  std::ifstream file(std::filesystem::path(TAVREL_ROWS), std::ios::binary);
  std::vector<std::string> names;
  for (const std::string& line : JoinedLines(file)) {
    if (line.starts_with('[') && line.rfind(" =>") == line.npos)
      names.push_back(line.substr(1, line.find(':') - 1));
  }
  return names;
}
