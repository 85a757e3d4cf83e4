#include "support/text.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <windows.h>

#include "text/text.h"
#include "version.h"

namespace support {
namespace {

std::vector<std::vector<std::wstring>> ReadRows(const char* file) {
  std::vector<std::vector<std::wstring>> rows;
  std::ifstream lines(std::filesystem::path(TAVREL_TESTS_FOLDER) / file);
  for (const std::string& line : JoinedLines(lines)) {
    if (line.empty() || line[0] == '#') continue;
    rows.push_back(Split(std::filesystem::path(std::u8string(line.begin(), line.end())).wstring(), L';'));
  }
  if (!rows.empty()) return rows;
  std::fprintf(stderr, "no rows in %s\n", file);
  std::exit(3);
}

/// The column of systems.txt for the system that this program runs on.
std::size_t SystemColumn() {
  const char* const version = WineVersion();
  if (version == nullptr) return 1;
  return std::atoi(version) <= 8 ? 2 : 3;
}

}  // namespace

std::vector<std::vector<std::wstring>> Rows(const char* file) {
  static const auto systems = ReadRows("systems.txt");
  static const std::size_t column = SystemColumn();
  auto rows = ReadRows(file);
  for (auto& row : rows) {
    for (std::wstring& field : row) {
      for (const auto& system : systems) text::ReplaceAll(field, L"@" + system[0] + L"@", system[column]);
      text::ReplaceAll(field, L"@FILEVERSION@", L"" TAVREL_FILE_VERSION);
    }
  }
  return rows;
}

const char* WineVersion() {
  using Function = const char*(__cdecl*)();
  const auto version =
      std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"));
  return version == nullptr ? nullptr : version();
}

}  // namespace support
