#pragma once

#include <windows.h>

#include <prsht.h>

#include "framework/window.h"

class CPropertySheet;

/// A page of a property sheet, created from a dialog template when it is first shown.
class CPropertyPage : public CWnd {
 public:
  /// `template_id`: the dialog template; its caption is the tab's.
  explicit CPropertyPage(int template_id) : template_id_(template_id) {}

 protected:
  /// The sheet that the page was added to.
  CPropertySheet& Sheet() const { return *sheet_; }
  /// Ends the sheet; its DoModal returns `result`.
  void EndDialog(INT_PTR result);

  /// Moves the focus to FocusTarget() after the current message, because the sheet sets the focus itself when
  /// it shows a page. Does nothing if another page is visible then.
  void PostFocus();
  /// Calls OnSiblingChanged of every page whose window exists.
  void NotifySiblings();
  /// For a thread that was blocked: drops the clicks on this page and the keys that arrived meanwhile,
  /// because they refer to what the page showed then. Escape and Alt+F4 still close the sheet.
  void DiscardInput();

  /// Attaches `control` to the page's control `id`.
  void AttachControl(int id, CWnd& control) { control.Attach(GetDlgItem(Handle(), id)); }
  /// Called when the page's window exists. Windows then sets the focus.
  virtual void OnInitDialog() = 0;
  /// Called before the page is shown; an override calls the base's.
  virtual void OnSetActive();
  /// The control, of the page or the sheet, that the user needs next.
  virtual HWND FocusTarget() const = 0;
  /// Called after another page has changed data that this page shows.
  virtual void OnSiblingChanged() {}
  /// Called for a control's notification. `id`: the control. `code`: as in WM_COMMAND.
  virtual void OnCommand(int id, int code) = 0;

  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  friend class CPropertySheet;

  PROPSHEETPAGEW Header(HINSTANCE instance);
  static INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);

  int template_id_;
  CPropertySheet* sheet_ = nullptr;
};
