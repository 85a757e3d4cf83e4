#pragma once

#include <string>
#include <string_view>

/// The product label followed by " Build Version : NA".
std::wstring InitialBuildLine();
/// The six entries at the head of a run's log, each followed by "\n\n". `invoke_mode` ends the last one. Asks
/// for the local time; a time that cannot be converted ends the program.
std::wstring RunHeader(bool administrator, std::wstring_view invoke_mode);
