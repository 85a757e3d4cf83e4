#include "framework/application.h"

#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <iterator>
#include <memory>

#include "platform/system_library.h"

namespace {

platform::SystemLibrary common_controls(L"comctl32.dll");
platform::SystemFunction<decltype(&::InitCommonControlsEx)> LoadCommonControls(common_controls,
                                                                               "InitCommonControlsEx");
platform::SystemLibrary ole(L"ole32.dll");
platform::SystemFunction<decltype(&::CoInitializeEx)> InitializeCom(ole, "CoInitializeEx", E_FAIL);
platform::SystemFunction<decltype(&::CoUninitialize)> UninitializeCom(ole, "CoUninitialize");

constexpr WORD kUnseen[] = {SW_HIDE, SW_MINIMIZE, SW_SHOWMINIMIZED, SW_SHOWMINNOACTIVE, SW_FORCEMINIMIZE};

/// In a process's first ShowWindow call Windows ignores the argument and uses the show command that its
/// starter gave. A hidden or minimised sheet or message box would then wait for ever. So this function makes
/// that call with a window that stays invisible, a layered one without attributes.
void ConsumeStartUpShowCommand() {
  STARTUPINFOW start = {};
  start.cb = sizeof(start);
  GetStartupInfoW(&start);
  if ((start.dwFlags & STARTF_USESHOWWINDOW) == 0) return;
  if (std::find(std::begin(kUnseen), std::end(kUnseen), start.wShowWindow) == std::end(kUnseen)) return;
  const HWND window = CreateWindowExW(WS_EX_LAYERED | WS_EX_TOOLWINDOW, L"Static", nullptr,
                                      WS_OVERLAPPEDWINDOW, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  if (window == nullptr) return;
  ShowWindow(window, SW_SHOWNORMAL);
  DestroyWindow(window);
}

}  // namespace

int CWinApp::Run(HINSTANCE instance) {
  instance_ = instance;
  InitInstance();
  return ExitInstance();
}

BOOL CWinApp::InitInstance() {
  windows_pending_ = true;
  return FALSE;
}

void CWinApp::PrepareWindows() {
  if (current_ == nullptr || !current_->windows_pending_) return;
  current_->windows_pending_ = false;
  const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_WIN95_CLASSES};
  LoadCommonControls(&classes);
  // For the shell's functions and dialogs.
  current_->com_ready_ = SUCCEEDED(InitializeCom(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
  ConsumeStartUpShowCommand();
}

int CWinApp::ExitInstance() {
  if (com_ready_) UninitializeCom();
  com_ready_ = false;
  return 0;
}

void CWinApp::ParseCommandLine(CCommandLineInfo& info) {
  int count = 0;
  // One block of the local heap holds the array and the texts.
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                &LocalFree);
  if (arguments == nullptr) return;
  for (int i = 1; i < count; ++i) {
    const wchar_t* text = arguments.get()[i];
    const bool is_switch = *text == L'/' || *text == L'-';
    info.ParseParam(is_switch ? text + 1 : text, is_switch, i + 1 == count);
  }
}
