#pragma once

#include <string>

namespace platform {

/// The system's message for the error code `error`, without line breaks at its end. Empty when the system
/// knows none, or one of more than 1023 characters.
std::wstring SystemMessage(unsigned long error);
/// `error` as unsigned decimal.
std::wstring ErrorNumber(unsigned long error);

}  // namespace platform
