#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support {

std::string Utf8(std::wstring_view text);
/// The parts between the separators; one empty part for an empty text.
std::vector<std::wstring> Split(std::wstring_view text, wchar_t separator);
/// `text` with the program's own version for @FILEVERSION@, and for each name of systems.txt between two '@'
/// what holds on the system that this program runs on.
std::wstring OnThisSystem(std::wstring text);
/// The lines of a table, split at ';', of a UTF-8 file named as below the tests' folder: "integration/x.txt".
/// What OnThisSystem knows is filled in.
/// Lines that begin with '#' and empty ones are left out. Ends the program when there are none.
std::vector<std::vector<std::wstring>> Rows(const char* file);

/// Empty when `log` is exactly these entries, each followed by "\n\n"; else which one differs, and how.
/// For CHECK(LogDifference(...) == "").
std::string LogDifference(std::wstring_view log, const std::vector<std::wstring>& expected);

}  // namespace support
