#pragma once

#include <string>
#include <string_view>

/// Parameters with which the command interpreter runs `file` with the argument /update. The whole command
/// stands in one pair of quotes, `file` in none of its own.
std::wstring LaunchParameters(std::wstring_view file);
