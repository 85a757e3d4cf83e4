#include "framework/dialogs.h"

#include <commdlg.h>

#include <algorithm>

#include "framework/application.h"
#include "framework/window.h"
#include "platform/system_library.h"

namespace {

platform::SystemLibrary common_dialogs(L"comdlg32.dll");
platform::SystemFunction<decltype(&::GetSaveFileNameW)> GetSaveFile(common_dialogs, "GetSaveFileNameW");

constexpr std::size_t kLongestPath = 32768;

}  // namespace

int ShowMessage(const std::wstring& text, UINT flags, const std::wstring& title) {
  CWinApp::PrepareWindows();
  const std::wstring& caption = title.empty() ? CWinApp::Current()->Title() : title;
  const CWnd* main = CWinApp::Current()->MainWindow();
  const bool shown = main != nullptr && main->Handle() != nullptr;
  const HWND owner = shown ? GetLastActivePopup(main->Handle()) : nullptr;
  // Without an owner, only this flag brings the box in front of the program that started this one.
  if (owner == nullptr) flags |= MB_SETFOREGROUND;
  return MessageBoxW(owner, text.c_str(), caption.c_str(), flags);
}

std::optional<std::wstring> AskSavePath(HWND owner, const wchar_t* default_extension, std::wstring filter) {
  CWinApp::PrepareWindows();
  std::replace(filter.begin(), filter.end(), L'|', L'\0');
  std::wstring path(kLongestPath, L'\0');

  OPENFILENAMEW dialog = {};
  dialog.lStructSize = sizeof(dialog);
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.c_str();
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = path.data();
  dialog.nMaxFile = static_cast<DWORD>(path.size());
  dialog.lpstrDefExt = default_extension;
  dialog.Flags = OFN_EXPLORER | OFN_ENABLESIZING | OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_NOCHANGEDIR;
  if (!GetSaveFile(&dialog)) return std::nullopt;
  path.resize(path.find(L'\0'));
  return path;
}
