#pragma once

#include <string>
#include <string_view>

namespace platform {

/// UTF-16 text as UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
/// Text of the system's ANSI code page as UTF-16.
std::wstring FromAnsi(std::string_view bytes);

}  // namespace platform
