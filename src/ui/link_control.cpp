#include "ui/link_control.h"

#include <shellapi.h>

namespace {

HBRUSH FaceBrush() {
  return CreateSolidBrush(GetSysColor(COLOR_3DFACE));
}

}  // namespace

CSysURL::CSysURL() : m_hbrBackground(FaceBrush()) {
  GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(m_logFont), &m_logFont);
  m_font.reset(CreateFontIndirectW(&m_logFont));
  m_hbrSpare = FaceBrush();
}

CSysURL& CSysURL::SetLinkColor(COLORREF color) {
  m_crText = color;
  RedrawNow();
  return *this;
}

bool CSysURL::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_LBUTTONDOWN:
      OpenText();
      return false;
    case WM_SETCURSOR:
      if (m_hCursor == nullptr) return false;
      SetCursor(m_hCursor);
      result = TRUE;
      return true;
    default:
      return CStatic::OnMessage(message, wparam, lparam, result);
  }
}

HBRUSH CSysURL::OnReflectedColor(UINT message, HDC context) {
  if (message == WM_CTLCOLORSTATIC) {
    SelectObject(context, m_font.get());
    SetTextColor(context, m_crText);
    SetBkMode(context, TRANSPARENT);
  }
  return m_hbrBackground.get();
}

void CSysURL::OpenText() const {
  std::wstring target = Text();
  if (target.find(L'@') != std::wstring::npos) target.insert(0, L"mailto:");
  ShellExecuteW(Handle(), L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}
