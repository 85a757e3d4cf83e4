#pragma once

#include "platform/system_text.h"

namespace support {

inline constexpr auto& Utf8 = platform::ToUtf8;
/// Wine's version, such as "8.0"; null on Windows.
const char* WineVersion();

}  // namespace support
