#include "support/text.h"

#include <bit>
#include <cstdlib>
#include <regex>

#include <windows.h>

#include "text/text.h"
#include "version.h"

namespace support {

std::vector<Row> Rows(const char* file, std::size_t least, std::size_t most) {
  static const std::vector<Row> systems = ReadTable("systems.txt", 4, 4);
  static const std::size_t column = WineVersion() == nullptr ? 1 : std::atoi(WineVersion()) <= 8 ? 2 : 3;
  static const std::wregex name(L"@[A-Z][A-Z -]*@");
  std::vector<Row> rows = ReadTable(file, least, most);
  for (Row& row : rows) {
    for (std::wstring& field : row) {
      for (const Row& system : systems) text::ReplaceAll(field, L"@" + system[0] + L"@", system[column]);
      text::ReplaceAll(field, L"@FILEVERSION@", L"" TAVREL_FILE_VERSION);
      if (std::regex_search(field, name)) Refuse("unknown name between '@'", field);
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
