#pragma once

#include <string>

namespace platform {

/// The local time in the C library's format `format`, at most 127 characters, with English names. A time that
/// cannot be converted ends the program through the runtime's invalid-argument handler.
std::wstring FormatLocalTime(const wchar_t* format);

}  // namespace platform
