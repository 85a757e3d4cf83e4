#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Appends the null-terminated names that stand in `buffer` to `sections`. The first empty name ends the
/// list; a name without its null at the buffer's end was cut and is dropped.
void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections);
