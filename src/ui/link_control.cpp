#include "ui/link_control.h"

#include <shellapi.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int kReadableDifference = 80;  // in brightness, of 255
constexpr int kFocusMargin = 1;          // pixels between the text and the focus rectangle
constexpr COLORREF kUsualLinkColor = RGB(0, 102, 204);

/// The device context of a window.
class WindowContext {
 public:
  explicit WindowContext(HWND window) : window_(window), context_(GetDC(window)) {}
  WindowContext(const WindowContext&) = delete;
  WindowContext& operator=(const WindowContext&) = delete;
  ~WindowContext() { ReleaseDC(window_, context_); }
  HDC get() const { return context_; }

 private:
  HWND window_;
  HDC context_;
};

HBRUSH FaceBrush() {
  return CreateSolidBrush(GetSysColor(COLOR_3DFACE));
}

/// 0 to 255. The weights are those of the luma of ITU-R BT.601.
int Brightness(COLORREF color) {
  return (GetRValue(color) * 299 + GetGValue(color) * 587 + GetBValue(color) * 114) / 1000;
}

/// `color` where it is readable on the background of the pages; else `other`.
COLORREF ReadableOnFace(COLORREF color, COLORREF other) {
  const int difference = Brightness(color) - Brightness(GetSysColor(COLOR_3DFACE));
  return std::abs(difference) >= kReadableDifference ? color : other;
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
    SetTextColor(context, ReadableOnFace(m_crText, GetSysColor(COLOR_BTNTEXT)));
    SetBkMode(context, TRANSPARENT);
  }
  // The system's colours can change while the window is open; Windows then has it painted anew.
  m_hbrBackground.reset(FaceBrush());
  return m_hbrBackground.get();
}

void CSysURL::OpenText() const {
  std::wstring target = Text();
  if (target.find(L'@') != std::wstring::npos) target.insert(0, L"mailto:");
  ShellExecuteW(Handle(), L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

CLogFileLink::CLogFileLink() {
  m_hCursor = LoadCursorW(nullptr, IDC_HAND);
}

void CLogFileLink::ShowPath(const std::wstring& path, int widest) {
  if (Handle() == nullptr) return;
  const WindowContext context(Handle());
  const HGDIOBJ previous = SelectObject(context.get(), Font());
  SIZE text = {};
  GetTextExtentPoint32W(context.get(), path.c_str(), static_cast<int>(path.size()), &text);
  SelectObject(context.get(), previous);
  RECT area = {};
  GetClientRect(Handle(), &area);
  const int width = std::min<int>(text.cx + 2 * kFocusMargin, widest);
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
      if (wparam != VK_SPACE && wparam != VK_RETURN) return false;
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

HBRUSH CLogFileLink::OnReflectedColor(UINT message, HDC context) {
  m_crText = ReadableOnFace(GetSysColor(COLOR_HOTLIGHT), kUsualLinkColor);
  return CSysURL::OnReflectedColor(message, context);
}

void CLogFileLink::DrawFocus() {
  const WindowContext context(Handle());
  RECT area = {};
  GetClientRect(Handle(), &area);
  SetTextColor(context.get(), GetSysColor(COLOR_BTNTEXT));
  SetBkColor(context.get(), GetSysColor(COLOR_BTNFACE));
  DrawFocusRect(context.get(), &area);
}
