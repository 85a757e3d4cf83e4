#pragma once

#include <string>
#include <string_view>

/// Wide text consists of UTF-16 code units on every host. A byte that is not valid UTF-8 becomes U+DC00 plus
/// the byte, a lone surrogate in the range U+DC80 to U+DCFF.
namespace console {

/// The text of a file without its byte order mark: UTF-16 after a UTF-16 mark of either byte order, otherwise
/// UTF-8 with or without a mark. An odd last byte of UTF-16 is dropped.
std::wstring DecodeText(std::string_view bytes);

/// `text` in UTF-8. A lone surrogate that represents an invalid byte becomes "\xNN", any other U+FFFD.
std::string Utf8(std::wstring_view text);

}  // namespace console
