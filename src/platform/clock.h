#pragma once

#include <string>

namespace platform {

/// The local time as wcsftime formats it with `format`, with English names; empty when that has more than 127
/// characters. A time that the C runtime cannot convert ends the program.
std::wstring FormatLocalTime(const wchar_t* format);

}  // namespace platform
