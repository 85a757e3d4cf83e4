#pragma once

#include <string>
#include <string_view>

/// The product label followed by " Build Version : NA".
std::wstring InitialBuildLine();
/// The six entries at the head of a run's log, each followed by "\n\n". `invoke_mode` is the end of the last
/// entry. Contains the local time (platform/system_text.h).
std::wstring RunHeader(bool administrator, std::wstring_view invoke_mode);
