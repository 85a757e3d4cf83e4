#include "support/text.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <windows.h>

#include "platform/files.h"
#include "text/text.h"
#include "version.h"

namespace support {
namespace {

std::vector<std::vector<std::wstring>> ReadRows(const char* file) {
  std::vector<std::vector<std::wstring>> rows;
  std::ifstream lines(std::filesystem::path(TAVREL_TESTS_FOLDER) / file);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    rows.push_back(Split(std::filesystem::path(std::u8string(line.begin(), line.end())).wstring(), L';'));
  }
  if (!rows.empty()) return rows;
  std::fprintf(stderr, "no rows in %s\n", file);
  std::exit(3);
}

/// The column of systems.txt for the system that this program runs on.
std::size_t SystemColumn() {
  using WineVersion = const char*(__cdecl*)();
  const auto version =
      std::bit_cast<WineVersion>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"));
  if (version == nullptr) return 1;
  return std::atoi(version()) <= 8 ? 2 : 3;
}

}  // namespace

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

std::wstring OnThisSystem(std::wstring text) {
  static const auto systems = ReadRows("systems.txt");
  static const std::size_t column = SystemColumn();
  for (const auto& row : systems) text::ReplaceAll(text, L"@" + row[0] + L"@", row[column]);
  text::ReplaceAll(text, L"@FILEVERSION@", L"" TAVREL_FILE_VERSION);
  return text;
}

std::vector<std::vector<std::wstring>> Rows(const char* file) {
  auto rows = ReadRows(file);
  for (auto& row : rows) {
    for (std::wstring& field : row) field = OnThisSystem(field);
  }
  return rows;
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
