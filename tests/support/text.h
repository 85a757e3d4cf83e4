#pragma once

#include <vector>

#include "platform/system_text.h"
#include "support/table.h"

namespace support {

inline constexpr auto& Utf8 = platform::ToUtf8;
using ::Split;
/// As ReadTable. For "@FILEVERSION@" stands the program's own version, and for each name of systems.txt
/// between two '@' its value on this system; other names there are refused.
std::vector<Row> Rows(const char* file, std::size_t least, std::size_t most);
/// Wine's version, such as "8.0"; null on Windows.
const char* WineVersion();

}  // namespace support
