#pragma once

#include <set>
#include <string>
#include <string_view>

/// For each row of the table of this name in rows.txt, `function` of the first column must give the second.
void CheckRows(const std::string& name, std::wstring (*function)(std::wstring_view));
/// The names of all tables in rows.txt.
std::set<std::string> TableNames();
