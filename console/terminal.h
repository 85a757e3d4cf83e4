#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace console {

/// `text` in UTF-8, safe on a terminal. "\xNN" or "\uNNNN" replaces every character that controls a terminal,
/// changes the direction or order of text, or is invisible, and every invalid byte (console/encoding.h).
std::string Printable(std::wstring_view text);
/// The same for bytes that should be UTF-8.
std::string Printable(std::string_view bytes);
/// The same for a path's name.
std::string PrintablePath(const std::filesystem::path& path);

/// Whether a UTF-16 code unit is a character that Printable replaces.
bool IsControl(wchar_t unit);

}  // namespace console
