#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "framework/window.h"

class CPropertyPage;

/// A property sheet with OK, Cancel and Help and without Apply, run modally.
class CPropertySheet : public CWnd {
 public:
  /// Command that F1 sends to the sheet.
  static constexpr int kHelpCommand = 57670;

  explicit CPropertySheet(std::wstring_view title) : title_(title) {}

  /// Adds a page after those added before; it must outlive the sheet's run.
  void AddPage(CPropertyPage& page);
  /// The page shown first, counted from 0.
  void SetActivePage(int index) { start_page_ = index; }
  /// Resource identifier of the icon in the title bar and in the taskbar; 0: none.
  void SetIcon(int icon_id) { icon_id_ = icon_id; }

  /// Shows the sheet and returns when it ended: IDOK, IDCANCEL or what EndDialog was given. -1 when the sheet
  /// cannot be shown, at once, or when its window was destroyed by someone else.
  INT_PTR DoModal();
  /// Ends DoModal with `result` as soon as the message in hand is done.
  void EndDialog(INT_PTR result);

 protected:
  /// The sheet's window stands, its first page is made.
  virtual void OnInitDialog() = 0;
  /// A command of a button of the sheet itself, of the system menu below 0xF000, or of F1 (kHelpCommand).
  /// True: handled.
  virtual bool OnCommand(int id);

  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  HWND Create();
  void ShowIcon();
  void RunLoop();
  void EndWhenClosed();
  void WakeLoop();

  std::wstring title_;
  std::vector<CPropertyPage*> pages_;
  int start_page_ = 0;
  int icon_id_ = 0;
  bool ended_ = false;
  INT_PTR result_ = -1;
};
