#pragma once

#include <string>
#include <string_view>

/// Parameters with which the command interpreter runs `file` with the argument /update. One pair of
/// quotes encloses the whole command; `file` is not quoted separately.
std::wstring LaunchParameters(std::wstring_view file);
