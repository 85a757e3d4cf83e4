#include "framework/property_sheet.h"

#include "framework/application.h"
#include "framework/property_page.h"
#include "platform/system_library.h"

namespace {

platform::SystemLibrary common_controls(L"comctl32.dll");
platform::SystemFunction<decltype(&::PropertySheetW)> CreateSheet(common_controls, "PropertySheetW", -1);

// Windows reserves the commands of the system menu from this one on.
constexpr WPARAM kFirstSystemCommand = 0xF000;

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
  result_.reset();
  if (!Create()) return -1;
  ShowIcon();
  OnInitDialog();
  CenterOnMonitor(Handle());
  ShowWindow(Handle(), SW_SHOWNORMAL);
  RunLoop();
  if (Handle() != nullptr) DestroyWindow(Handle());
  return result_.value_or(-1);
}

void CPropertySheet::EndDialog(INT_PTR result) {
  result_ = result;
}

bool CPropertySheet::Create() {
  const HINSTANCE instance = CWinApp::Current()->Instance();
  std::vector<PROPSHEETPAGEW> pages;
  pages.reserve(pages_.size());
  for (CPropertyPage* page : pages_) pages.push_back(page->Header(instance));

  PROPSHEETHEADERW header = {};
  header.dwSize = sizeof(header);
  // The loop of a modal sheet knows no Ctrl+Tab under Wine 8, and ends only after a posted message.
  header.dwFlags = PSH_PROPSHEETPAGE | PSH_MODELESS | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_NOCONTEXTHELP;
  header.hInstance = instance;
  header.pszCaption = title_.c_str();
  header.nPages = static_cast<UINT>(pages.size());
  header.ppsp = pages.data();
  const INT_PTR created = CreateSheet(&header);
  if (created == -1) return false;
  const auto window = reinterpret_cast<HWND>(created);
  if (Attach(window)) return true;
  DestroyWindow(window);
  return false;
}

void CPropertySheet::RunLoop() {
  while (!result_) {
    // Unlike GetMessage, this wait also returns for a message that another program sends, which PeekMessage
    // then delivers.
    MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    MSG message;
    if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_QUIT) {
        EndDialog(IDCANCEL);
      } else if (!PropSheet_IsDialogMessage(Handle(), &message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
      }
    }
    if (result_) return;
    // Without a current page, the user has closed the sheet.
    if (Handle() == nullptr || PropSheet_GetCurrentPageHwnd(Handle()) == nullptr) EndDialog(IDCANCEL);
  }
}

void CPropertySheet::ShowIcon() {
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

bool CPropertySheet::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_COMMAND:
      return OnCommand(LOWORD(wparam));
    case WM_SYSCOMMAND:
      return wparam < kFirstSystemCommand && OnCommand(static_cast<int>(wparam));
    case WM_HELP:
      return OnCommand(kHelpCommand);
    default:
      return CWnd::OnMessage(message, wparam, lparam, result);
  }
}
