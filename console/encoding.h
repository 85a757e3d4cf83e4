#pragma once

#include <string>
#include <string_view>

/// Wide text holds UTF-16 code units on every host. A byte that no encoding explains is U+DC00 plus the byte,
/// a lone surrogate in the range U+DC80 to U+DCFF.
namespace console {

/// The text of a file: UTF-16 of either byte order behind its byte order mark, else UTF-8 with or without a
/// mark. The mark is left out. An odd last byte of UTF-16 is dropped.
std::wstring DecodeText(std::string_view bytes);

/// `text` in UTF-8. A byte that no encoding explains becomes "\xNN", any other lone surrogate U+FFFD.
std::string Utf8(std::wstring_view text);

}  // namespace console
