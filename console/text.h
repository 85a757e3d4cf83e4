#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Text of files and terminals. Wide text consists of UTF-16 code units on every host. A byte that is not
/// valid UTF-8 becomes U+DC00 plus the byte, a lone surrogate in the range U+DC80 to U+DCFF.
namespace console {

/// The text of a file without its byte order mark: UTF-16 after a UTF-16 mark of either byte order, otherwise
/// UTF-8 with or without a mark. An odd last byte of UTF-16 is dropped.
std::wstring DecodeText(std::string_view bytes);

/// `text` in UTF-8. A lone surrogate that represents an invalid byte becomes "\xNN", any other U+FFFD.
std::string Utf8(std::wstring_view text);

/// `text` in UTF-8, safe on a terminal. "\xNN" or "\uNNNN" replaces every character that controls a terminal,
/// changes the direction or order of text, or is invisible, and every invalid byte.
std::string Printable(std::wstring_view text);
/// The same for bytes that should be UTF-8.
std::string Printable(std::string_view bytes);
/// The same for a path's name.
std::string PrintablePath(const std::filesystem::path& path);

/// Whether a UTF-16 code unit is a character that Printable replaces.
bool IsControl(wchar_t unit);

}  // namespace console
