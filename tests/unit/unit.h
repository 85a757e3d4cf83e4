#pragma once

#include <doctest.h>

#include "literal.h"

// Failures show wide texts as rows have them.
template <>
struct doctest::StringMaker<std::wstring> {
  static String convert(const std::wstring& value) { return Literal(value).c_str(); }
};

/// For each row of this table, `function` of the input must give the result.
void CheckRows(const char* title, std::wstring (*function)(std::wstring_view));
