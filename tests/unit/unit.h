#pragma once

#include <string>
#include <string_view>
#include <vector>

/// For each row of the table of this name, `function` of the input must give the result.
void CheckRows(const char* name, std::wstring (*function)(std::wstring_view));
/// The names of all tables of the file of rows.
std::vector<std::string> TableNames();
