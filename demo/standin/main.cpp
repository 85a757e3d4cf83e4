// A stand-in for the installed product, for the demo and the tests.
//
// Started with arguments it takes the place of the self-update: it writes how it was started to
// "qrt-arguments.txt" beside its executable (one UTF-8 line per argument, then the current folder) and ends.
// Started without arguments it shows a window until that is closed, five minutes at most.

#include <windows.h>

#include <shellapi.h>

#include <string>
#include <string_view>

#include "version.h"

namespace {

constexpr UINT kLongestRunMs = 5 * 60 * 1000;
constexpr UINT_PTR kEndTimer = 1;

std::string ToUtf8(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), needed, nullptr, nullptr);
  return result;
}

std::wstring OwnFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\'));
}

std::wstring CurrentFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data()));
  return path;
}

// The note gets its name only when it is complete, so that a reader never sees a part of it.
bool WriteNote(const std::string& text) {
  const std::wstring path = OwnFolder() + L"\\qrt-arguments.txt";
  const std::wstring draft = path + L".new";
  const HANDLE file =
      CreateFileW(draft.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const BOOL ok = WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  CloseHandle(file);
  return ok && written == text.size() &&
         MoveFileExW(draft.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_TIMER:
      DestroyWindow(window);
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, message, wparam, lparam);
  }
}

int ShowProduct(HINSTANCE instance) {
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = OnMessage;
  window_class.hInstance = instance;
  window_class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
  window_class.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
  window_class.lpszClassName = L"ProductStandIn";
  if (RegisterClassW(&window_class) == 0) return 1;
  const HWND window = CreateWindowExW(0, window_class.lpszClassName, L"" TAVREL_PRODUCT_LABEL " (stand-in)",
                                      WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT, CW_USEDEFAULT, 360,
                                      160, nullptr, nullptr, instance, nullptr);
  if (window == nullptr || SetTimer(window, kEndTimer, kLongestRunMs, nullptr) == 0) return 1;
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return 0;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  int count = 0;
  PWSTR* const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (arguments == nullptr) return 1;
  std::string note;
  for (int i = 1; i < count; ++i) note += ToUtf8(arguments[i]) + "\r\n";
  LocalFree(static_cast<void*>(arguments));
  if (count < 2) return ShowProduct(instance);
  note += ToUtf8(CurrentFolder()) + "\r\n";
  return WriteNote(note) ? 0 : 1;
}
