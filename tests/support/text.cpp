#include "support/text.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/files.h"
#include "version.h"

namespace support {

std::string Utf8(std::wstring_view text) {
  return platform::ToUtf8(text);
}

std::vector<std::wstring> Split(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring> parts;
  for (std::size_t end; (end = text.find(separator)) != text.npos; text.remove_prefix(end + 1)) {
    parts.emplace_back(text.substr(0, end));
  }
  parts.emplace_back(text);
  return parts;
}

std::vector<std::vector<std::wstring>> Rows(const char* file) {
  constexpr std::string_view kFileVersion = "@FILEVERSION@";
  std::vector<std::vector<std::wstring>> rows;
  std::ifstream lines(std::filesystem::path(TAVREL_TESTS_FOLDER) / file);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (const std::size_t at = line.find(kFileVersion); at != line.npos) {
      line.replace(at, kFileVersion.size(), TAVREL_FILE_VERSION);
    }
    rows.push_back(Split(std::filesystem::path(std::u8string(line.begin(), line.end())).wstring(), L';'));
  }
  if (!rows.empty()) return rows;
  std::fprintf(stderr, "no rows in %s\n", file);
  std::exit(3);
}

std::string LogDifference(std::wstring_view log, const std::vector<std::wstring>& expected) {
  for (const std::wstring& wanted : expected) {
    const std::wstring_view entry = log.substr(0, log.find(L"\n\n"));
    if (entry != wanted || entry.size() == log.size()) {
      return "is       \"" + Utf8(entry) + "\"\nexpected \"" + Utf8(wanted) + "\"";
    }
    log.remove_prefix(entry.size() + 2);
  }
  return log.empty() ? std::string() : "more than expected: \"" + Utf8(log) + "\"";
}

}  // namespace support
