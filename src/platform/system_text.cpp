#include "platform/system_text.h"

#include <windows.h>

#include <ctime>
#include <cwchar>

#include "text/text.h"

namespace platform {

std::string ToUtf8(std::wstring_view text) {
  if (text.empty()) return {};
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

std::wstring FromAnsi(std::string_view bytes) {
  if (bytes.empty()) return {};
  const int length = static_cast<int>(bytes.size());
  const int size = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), size);
  return text;
}

std::wstring SystemMessage(unsigned long error) {
  wchar_t buffer[1024]{};
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, 0, buffer, 1024, nullptr);
  return std::wstring(text::Trim({buffer, length}));
}

std::wstring FormatLocalTime(const wchar_t* format) {
  // Not from the C runtime, whose conversion ends the program for a clock that is set before 1970.
  SYSTEMTIME now{};
  GetLocalTime(&now);
  tm time{};
  time.tm_year = now.wYear - 1900;
  time.tm_mon = now.wMonth - 1;
  time.tm_mday = now.wDay;
  time.tm_wday = now.wDayOfWeek;
  time.tm_hour = now.wHour;
  time.tm_min = now.wMinute;
  time.tm_sec = now.wSecond;
  wchar_t buffer[128];
  return std::wstring(buffer, std::wcsftime(buffer, 128, format, &time));
}

}  // namespace platform
