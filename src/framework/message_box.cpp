#include "framework/message_box.h"

#include "framework/application.h"
#include "framework/window.h"

namespace {

HWND MessageOwner(const CWinApp* application) {
  if (application == nullptr || application->MainWindow() == nullptr) return nullptr;
  const HWND main = application->MainWindow()->Handle();
  return main == nullptr ? nullptr : GetLastActivePopup(main);
}

}  // namespace

int ShowMessage(const std::wstring& text, UINT flags, const std::wstring& title) {
  CWinApp::PrepareWindows();
  const CWinApp* application = CWinApp::Current();
  const std::wstring& caption = title.empty() && application != nullptr ? application->Title() : title;
  const HWND owner = MessageOwner(application);
  // Without an owner, only this flag brings the box in front of the program that started this one.
  if (owner == nullptr) flags |= MB_SETFOREGROUND;
  return MessageBoxW(owner, text.c_str(), caption.c_str(), flags);
}
