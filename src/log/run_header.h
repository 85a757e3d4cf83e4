#pragma once

#include <array>
#include <string>
#include <string_view>

/// The product label followed by " Build Version : NA".
std::wstring InitialBuildLine();
/// The six entries that head a run's log, without separators. `invoke_mode` ends the last one. Asks for the
/// local time; a time that cannot be converted ends the program.
std::array<std::wstring, 6> RunHeaderLines(bool administrator, std::wstring_view invoke_mode);
