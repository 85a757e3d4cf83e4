#include "framework/property_sheet.h"

#include "framework/application.h"
#include "framework/common_controls.h"
#include "framework/property_page.h"

namespace {

// Windows reserves the commands of the system menu from this one on.
constexpr WPARAM kFirstSystemCommand = 0xF000;

/// The sheet that DoModal opens. The callback of PropertySheetW gets only the window.
CPropertySheet* g_opening = nullptr;

/// Centres `window` in its monitor's work area. A window that does not fit starts at the top left corner.
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
  CWinApp::PrepareWindows();
  const HINSTANCE instance = CWinApp::Current()->Instance();
  std::vector<PROPSHEETPAGEW> pages;
  pages.reserve(pages_.size());
  for (CPropertyPage* page : pages_) pages.push_back(page->Header(instance));

  PROPSHEETHEADERW header = {};
  header.dwSize = sizeof(header);
  header.dwFlags = PSH_PROPSHEETPAGE | PSH_USECALLBACK | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_NOCONTEXTHELP;
  header.hInstance = instance;
  header.pszCaption = title_.c_str();
  header.nPages = static_cast<UINT>(pages.size());
  header.nStartPage = static_cast<UINT>(start_page_);
  header.ppsp = pages.data();
  header.pfnCallback = &CPropertySheet::OnCallback;
  result_.reset();
  g_opening = this;
  const INT_PTR pressed = common_controls::PropertySheetW(&header);
  g_opening = nullptr;
  if (pressed == -1) return -1;
  return result_.value_or(pressed > 0 ? IDOK : IDCANCEL);
}

void CPropertySheet::EndDialog(INT_PTR result) {
  result_ = result;
  // Posted, because the sheet's loop checks only after a message of the queue whether the sheet has ended.
  PostMessageW(Handle(), PSM_PRESSBUTTON, result == IDOK ? PSBTN_OK : PSBTN_CANCEL, 0);
}

int CALLBACK CPropertySheet::OnCallback(HWND window, UINT message, LPARAM) {
  if (message == PSCB_INITIALIZED && g_opening != nullptr) g_opening->OnInitialized(window);
  return 0;
}

void CPropertySheet::OnInitialized(HWND window) {
  Attach(window);
  ShowIcon();
  OnInitDialog();
  CenterOnMonitor(window);
}

void CPropertySheet::ShowIcon() {
  if (icon_id_ == 0) return;
  const HICON taskbar_icon = SharedIcon(icon_id_, SM_CXICON, SM_CYICON);
  const HICON title_icon = SharedIcon(icon_id_, SM_CXSMICON, SM_CYSMICON);
  SendMessageW(Handle(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(taskbar_icon));
  SendMessageW(Handle(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(title_icon));
  // Windows shows no icon in the title bar of a dialog frame.
  const LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_EXSTYLE);
  SetWindowLongPtrW(Handle(), GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_DLGMODALFRAME));
  SetWindowPos(Handle(), nullptr, 0, 0, 0, 0,
               SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

bool CPropertySheet::OnCommand(int) {
  return false;
}

bool CPropertySheet::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_COMMAND:
      if (OnCommand(LOWORD(wparam))) return true;
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
