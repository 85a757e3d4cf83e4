#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/encoding.h"
#include "unit/literal.h"

namespace support {

inline constexpr auto& Utf8 = platform::ToUtf8;
using ::Split;
/// The lines of a table, split at ';', of a UTF-8 file named as below the tests' folder: "integration/x.txt".
/// For @FILEVERSION@ stands the program's own version, and for each name of systems.txt between two '@' what
/// holds on the system that this program runs on. Lines that begin with '#' and empty ones are left out. A
/// line that begins with four blanks continues the one above. Ends the program when there are no rows.
std::vector<std::vector<std::wstring>> Rows(const char* file);
/// Wine's version, such as "8.0"; null on Windows.
const char* WineVersion();

}  // namespace support
