#include "framework/controls.h"

namespace {

constexpr WPARAM kSelectAllCharacter = 1;  // WM_CHAR of Ctrl+A

bool IsSelectAllKey(WPARAM key) {
  return key == 'A' && GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
}

}  // namespace

void CButton::SetCheck(bool checked) {
  if (Handle() != nullptr) SendMessageW(Handle(), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool CReadOnlyEdit::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_GETDLGCODE:
      // By default an edit handles Tab, Enter and Escape, and selects everything when it gets the focus.
      result = Default(message, wparam, lparam) & ~(DLGC_WANTALLKEYS | DLGC_WANTTAB | DLGC_HASSETSEL);
      return true;
    case WM_SETFOCUS:
      result = Default(message, wparam, lparam);
      HideCaret(Handle());
      return true;
    case WM_KEYDOWN:
      if (!IsSelectAllKey(wparam)) break;
      SendMessageW(Handle(), EM_SETSEL, 0, -1);
      return true;
    case WM_CHAR:
      if (wparam == kSelectAllCharacter) return true;
      break;
    default:
      break;
  }
  return CWnd::OnMessage(message, wparam, lparam, result);
}
