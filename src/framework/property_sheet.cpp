#include "framework/property_sheet.h"

#include "framework/application.h"
#include "framework/common_controls.h"
#include "framework/property_page.h"

namespace {

// Commands of the system menu from here on are Windows' own.
constexpr WPARAM kFirstSystemCommand = 0xF000;

/// Moves `window` to the middle of its monitor's free area; what does not fit begins at its top left corner.
void CenterOnMonitor(HWND window) {
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof(monitor);
  RECT frame;
  if (!GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor)) return;
  if (!GetWindowRect(window, &frame)) return;
  const RECT& area = monitor.rcWork;
  const LONG x = area.left + (area.right - area.left - (frame.right - frame.left)) / 2;
  const LONG y = area.top + (area.bottom - area.top - (frame.bottom - frame.top)) / 2;
  SetWindowPos(window, nullptr, x < area.left ? area.left : x, y < area.top ? area.top : y, 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

HICON SharedIcon(int id, int width_metric, int height_metric) {
  const HANDLE icon = LoadImageW(CWinApp::Current()->Instance(), MAKEINTRESOURCEW(id), IMAGE_ICON,
                                 GetSystemMetrics(width_metric), GetSystemMetrics(height_metric), LR_SHARED);
  return static_cast<HICON>(icon);
}

}  // namespace

void CPropertySheet::AddPage(CPropertyPage& page) {
  page.sheet_ = this;
  pages_.push_back(&page);
}

INT_PTR CPropertySheet::DoModal() {
  ended_ = false;
  result_ = -1;
  CWinApp::PrepareWindows();
  const HWND window = Create();
  if (window == nullptr) return result_;
  if (!Attach(window)) {
    DestroyWindow(window);
    return result_;
  }
  ShowIcon();
  OnInitDialog();
  CenterOnMonitor(window);
  ShowWindow(window, SW_SHOWNORMAL);
  RunLoop();
  if (Handle() != nullptr) DestroyWindow(Handle());
  return result_;
}

void CPropertySheet::EndDialog(INT_PTR result) {
  result_ = result;
  ended_ = true;
  WakeLoop();
}

HWND CPropertySheet::Create() {
  const HINSTANCE instance = CWinApp::Current()->Instance();
  std::vector<PROPSHEETPAGEW> headers;
  headers.reserve(pages_.size());
  for (CPropertyPage* page : pages_) headers.push_back(page->Header(instance));

  PROPSHEETHEADERW header = {};
  header.dwSize = sizeof(header);
  // Modeless, since only then can a page end the sheet with a result of its own; DoModal runs the loop.
  header.dwFlags = PSH_PROPSHEETPAGE | PSH_MODELESS | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_NOCONTEXTHELP;
  header.hInstance = instance;
  header.pszCaption = title_.c_str();
  header.nPages = static_cast<UINT>(headers.size());
  header.nStartPage = static_cast<UINT>(start_page_);
  header.ppsp = headers.data();
  const INT_PTR made = common_controls::PropertySheetW(&header);
  return made == -1 ? nullptr : reinterpret_cast<HWND>(made);
}

void CPropertySheet::ShowIcon() {
  if (icon_id_ == 0) return;
  const HICON taskbar_icon = SharedIcon(icon_id_, SM_CXICON, SM_CYICON);
  const HICON title_icon = SharedIcon(icon_id_, SM_CXSMICON, SM_CYSMICON);
  SendMessageW(Handle(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(taskbar_icon));
  SendMessageW(Handle(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(title_icon));
  // A dialog frame shows no icon in its title bar.
  const LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_EXSTYLE);
  SetWindowLongPtrW(Handle(), GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_DLGMODALFRAME));
  SetWindowPos(Handle(), nullptr, 0, 0, 0, 0,
               SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CPropertySheet::RunLoop() {
  while (!ended_ && Handle() != nullptr) {
    MSG message;
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));  // meant for whoever runs the outer loop
    if (got == 0 || got == -1) return;
    if (!PropSheet_IsDialogMessage(Handle(), &message)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    EndWhenClosed();
  }
}

void CPropertySheet::EndWhenClosed() {
  // A modeless sheet that was closed by OK or Cancel says so by having no current page.
  if (ended_ || Handle() == nullptr || PropSheet_GetCurrentPageHwnd(Handle()) != nullptr) return;
  EndDialog(PropSheet_GetResult(Handle()) > 0 ? IDOK : IDCANCEL);
}

void CPropertySheet::WakeLoop() {
  // A message sent by another thread is answered inside GetMessage, which then goes on waiting.
  if (Handle() != nullptr) PostMessageW(Handle(), WM_NULL, 0, 0);
}

bool CPropertySheet::OnCommand(int) {
  return false;
}

bool CPropertySheet::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_COMMAND:
      WakeLoop();
      if (OnCommand(LOWORD(wparam))) return true;
      break;
    case WM_CLOSE:
    case PSM_PRESSBUTTON:
      WakeLoop();
      break;
    case WM_SYSCOMMAND:
      if (wparam < kFirstSystemCommand && OnCommand(static_cast<int>(wparam))) return true;
      break;
    case WM_HELP:
      if (OnCommand(kHelpCommand)) return true;
      break;
    default:
      break;
  }
  return CWnd::OnMessage(message, wparam, lparam, result);
}
