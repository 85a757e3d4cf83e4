#pragma once

#include <doctest.h>

#include <initializer_list>

#include "literal.h"

using namespace std::literals;

// Failures show wide texts as table literals.
template <>
struct doctest::StringMaker<std::wstring> {
  static String convert(const std::wstring& value) { return Literal(value).c_str(); }
};

/// For each row, "input => result", `function` of the input must give the result.
template <class Function>
void CheckRows(std::initializer_list<std::wstring_view> rows, Function function) {
  constexpr std::wstring_view kArrow = L" => ";
  for (const std::wstring_view row : rows) {
    const std::size_t arrow = row.rfind(kArrow);
    REQUIRE(arrow != row.npos);
    INFO("row ", Literal(row));
    const std::wstring expected(row.substr(arrow + kArrow.size()));
    CHECK(std::wstring(function(row.substr(0, arrow))) == expected);
  }
}
