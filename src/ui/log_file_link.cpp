#include "ui/log_file_link.h"

#include <algorithm>

#include "ui/readable_color.h"

namespace {

constexpr int kFocusMargin = 1;  // pixels between the text and the focus rectangle

constexpr COLORREF kUsualLinkColor = RGB(0, 102, 204);

bool IsOpenKey(WPARAM key) {
  return key == VK_SPACE || key == VK_RETURN;
}

int TextWidth(HWND window, HFONT font, const std::wstring& text) {
  const HDC context = GetDC(window);
  if (context == nullptr) return 0;
  const HGDIOBJ previous = SelectObject(context, font);
  SIZE size = {};
  GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
  SelectObject(context, previous);
  ReleaseDC(window, context);
  return size.cx;
}

}  // namespace

CLogFileLink::CLogFileLink() {
  SetLinkColor(ReadableOnFace({GetSysColor(COLOR_HOTLIGHT), kUsualLinkColor}));
  m_hCursor = LoadCursorW(nullptr, IDC_HAND);
}

void CLogFileLink::ShowPath(const std::wstring& path, int widest) {
  if (Handle() == nullptr) return;
  RECT area = {};
  GetClientRect(Handle(), &area);
  const int width = std::min(TextWidth(Handle(), Font(), path) + 2 * kFocusMargin, widest);
  SetWindowPos(Handle(), nullptr, 0, 0, width, area.bottom, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  if (path != Text()) SetText(path);
  Show(!path.empty());
}

bool CLogFileLink::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_GETDLGCODE: {
      // Without DLGC_STATIC, Tab stops here. With DLGC_WANTMESSAGE, Enter opens the link instead of pressing
      // OK.
      const auto* key = reinterpret_cast<const MSG*>(lparam);
      const bool opens = key != nullptr && key->message == WM_KEYDOWN && key->wParam == VK_RETURN;
      result = opens ? DLGC_WANTMESSAGE : 0;
      return true;
    }
    case WM_KEYDOWN:
      if (!IsOpenKey(wparam)) return false;
      OpenText();
      return true;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      result = Default(message, wparam, lparam);
      RedrawNow();
      return true;
    case WM_PAINT:
      result = Default(message, wparam, lparam);
      if (GetFocus() == Handle()) DrawFocus();
      return true;
    default:
      return CSysURL::OnMessage(message, wparam, lparam, result);
  }
}

void CLogFileLink::DrawFocus() {
  const HDC context = GetDC(Handle());
  if (context == nullptr) return;
  RECT area = {};
  GetClientRect(Handle(), &area);
  SetTextColor(context, GetSysColor(COLOR_BTNTEXT));
  SetBkColor(context, GetSysColor(COLOR_BTNFACE));
  DrawFocusRect(context, &area);
  ReleaseDC(Handle(), context);
}
