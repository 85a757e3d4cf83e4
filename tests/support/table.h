#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "update/check_rules.h"

/// What a parser reads, and what it must make of it.
struct Row {
  std::wstring input, result;
};

/// Reads a table below the tests' folder: "unit/rows.txt".
///
/// A table is ASCII; a line is a row, with ';' between its two columns. Empty lines, and lines that begin
/// with
/// '#', are no rows. "\n", "\t", "\r", "\0", "\\", and "\u" with four hexadecimal digits, are one character
/// each; a semicolon within a column is "\u003B". Throws for an unknown escape, and for a table without rows.
std::vector<Row> ReadTable(const char* file);

/// Decides for a row's input: the record ("-": there is none), the executable's version, its third and fourth
/// number, the list, with '|' between them.
Decision DecideFor(std::wstring_view input);

/// `value` as a column of a table can have it.
std::string Literal(std::wstring_view value);

/// The low byte of each character.
std::string Bytes(std::wstring_view text);

/// The parts of a text: "a|b" is two, the empty text none.
std::vector<std::wstring> Split(std::wstring_view joined, wchar_t separator = L'|');
