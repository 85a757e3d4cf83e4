#pragma once

#include <doctest.h>

#include <functional>

#include "literal.h"

// Failures show wide texts as rows have them.
template <>
struct doctest::StringMaker<std::wstring> {
  static String convert(const std::wstring& value) { return Literal(value).c_str(); }
};

/// For each row of the running test's table, `function` of the input must give the result.
void CheckRows(const std::function<std::wstring(std::wstring_view)>& function);
