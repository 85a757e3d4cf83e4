#include "framework/property_page.h"

#include <uxtheme.h>

#include "framework/property_sheet.h"
#include "platform/system_library.h"

namespace {

platform::SystemLibrary themes(L"uxtheme.dll");
platform::SystemFunction<decltype(&::EnableThemeDialogTexture)> EnableDialogTexture(
    themes, "EnableThemeDialogTexture");

constexpr UINT kFocusMessage = WM_APP + 0x3FFE;

/// Escape, Alt+F4 or the end of the thread. Keys come as system keys while no control has the focus.
bool IsClosing(const MSG& message) {
  if (message.message == WM_QUIT) return true;
  if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
  const bool alt = (HIWORD(message.lParam) & KF_ALTDOWN) != 0;
  const WPARAM key = alt ? VK_F4 : VK_ESCAPE;
  return message.wParam == key;
}

/// A dialog procedure returns the result of these messages directly instead of in DWLP_MSGRESULT.
bool IsColorMessage(UINT message) {
  return message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC;
}

}  // namespace

void CPropertyPage::EndDialog(INT_PTR result) {
  sheet_->EndDialog(result);
}

void CPropertyPage::PostFocus() {
  PostMessageW(Handle(), kFocusMessage, 0, 0);
}

void CPropertyPage::NotifySiblings() {
  SendMessageW(sheet_->Handle(), PSM_QUERYSIBLINGS, 0, 0);
}

void CPropertyPage::DiscardInput() {
  MSG message;
  bool leave = false;
  // On Windows, both also return WM_QUIT.
  while (PeekMessageW(&message, Handle(), WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, PM_REMOVE) ||
         PeekMessageW(&message, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE)) {
    leave = leave || IsClosing(message);
  }
  if (leave) PostMessageW(sheet_->Handle(), WM_CLOSE, 0, 0);
}

void CPropertyPage::OnSetActive() {
  // The tab's texture would fill the page but not the background of controls that set their own colours.
  EnableDialogTexture(Handle(), ETDT_DISABLE);
}

bool CPropertyPage::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_COMMAND:
      OnCommand(LOWORD(wparam), HIWORD(wparam));
      return true;
    case kFocusMessage:
      // Unlike SetFocus, WM_NEXTDLGCTL also updates the default button.
      if (IsWindowVisible(Handle()))
        SendMessageW(sheet_->Handle(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(FocusTarget()), TRUE);
      return true;
    case PSM_QUERYSIBLINGS:
      OnSiblingChanged();
      return true;
    case WM_NOTIFY:
      if (reinterpret_cast<const NMHDR*>(lparam)->code != PSN_SETACTIVE) return false;
      OnSetActive();
      return true;
    default:
      if (!IsColorMessage(message)) return false;
      result = reinterpret_cast<LRESULT>(ReflectColor(message, wparam, lparam));
      return result != 0;
  }
}

PROPSHEETPAGEW CPropertyPage::Header(HINSTANCE instance) {
  PROPSHEETPAGEW header = {};
  header.dwSize = sizeof(header);
  header.dwFlags = PSP_DEFAULT | PSP_HASHELP;
  header.hInstance = instance;
  header.pszTemplate = MAKEINTRESOURCEW(template_id_);
  header.pfnDlgProc = &CPropertyPage::DialogProcedure;
  header.lParam = reinterpret_cast<LPARAM>(this);
  return header;
}

INT_PTR CALLBACK CPropertyPage::DialogProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    const LPARAM page = reinterpret_cast<const PROPSHEETPAGEW*>(lparam)->lParam;
    SetWindowLongPtrW(window, DWLP_USER, page);
    auto* self = reinterpret_cast<CPropertyPage*>(page);
    self->Adopt(window);
    self->OnInitDialog();
    return TRUE;
  }
  // Messages before WM_INITDIALOG, such as WM_SETFONT, have no page yet.
  auto* self = reinterpret_cast<CPropertyPage*>(GetWindowLongPtrW(window, DWLP_USER));
  return self == nullptr ? FALSE : self->HandleMessage(message, wparam, lparam);
}

INT_PTR CPropertyPage::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  const HWND window = Handle();
  LRESULT result = 0;
  const bool handled = OnMessage(message, wparam, lparam, result);
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, DWLP_USER, 0);
    Adopt(nullptr);
  }
  if (!handled) return FALSE;
  if (IsColorMessage(message)) return result;
  SetWindowLongPtrW(window, DWLP_MSGRESULT, result);
  return TRUE;
}
