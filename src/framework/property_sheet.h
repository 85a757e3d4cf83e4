#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/window.h"

class CPropertyPage;

/// A property sheet with OK, Cancel and Help and without Apply. It is a modeless one with a message loop of
/// its own.
class CPropertySheet : public CWnd {
 public:
  /// Command that F1 sends to the sheet.
  static constexpr int kHelpCommand = 57670;

  /// `icon_id`: resource identifier of the icon in the title bar and in the taskbar.
  CPropertySheet(std::wstring_view title, int icon_id) : title_(title), icon_id_(icon_id) {}

  /// Adds a page after those added before. `page` must outlive DoModal.
  void AddPage(CPropertyPage& page);

  /// Shows the sheet with its first page and returns when it has ended: the value given to EndDialog,
  /// IDCANCEL when the user has closed it, -1 when it cannot be shown.
  INT_PTR DoModal();
  /// Ends DoModal with `result` after the current message.
  void EndDialog(INT_PTR result);

 protected:
  /// Called when the sheet and its first page exist and are not visible yet.
  virtual void OnInitDialog() = 0;
  /// A command of a button of the sheet itself, of the system menu below 0xF000, or of F1 (kHelpCommand).
  /// True: handled.
  virtual bool OnCommand(int id) = 0;

  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  /// False when the sheet cannot be shown.
  bool Create();
  void ShowIcon();
  void RunLoop();

  std::wstring title_;
  std::vector<CPropertyPage*> pages_;
  int icon_id_;
  std::optional<INT_PTR> result_;  ///< nothing while the sheet is open
};
