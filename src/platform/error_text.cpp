#include "platform/error_text.h"

#include <windows.h>

#include "text/text.h"

namespace platform {

std::wstring SystemMessage(unsigned long error) {
  wchar_t buffer[1024]{};
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, 0, buffer, 1024, nullptr);
  return std::wstring(text::Trim({buffer, length}));
}

std::wstring ErrorNumber(unsigned long error) {
  return text::FormatDecimal(error);
}

}  // namespace platform
