#pragma once

#include <string>
#include <string_view>

/// Texts that Windows converts or makes.
namespace platform {

/// UTF-16 text as UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
/// Text of the system's ANSI code page as UTF-16.
std::wstring FromAnsi(std::string_view bytes);

/// The system's message for the error code `error`, without line breaks at its end. Empty when the system
/// knows none, or one of more than 1023 characters.
std::wstring SystemMessage(unsigned long error);

/// The local time as wcsftime formats it with `format`, with English names; empty when that has more than 127
/// characters. Knows no day of the year (%j, %U, %W) and no time zone (%z).
std::wstring FormatLocalTime(const wchar_t* format);

}  // namespace platform
