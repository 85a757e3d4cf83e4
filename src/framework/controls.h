#pragma once

#include "framework/window.h"

/// A static text.
class CStatic : public CWnd {
 public:
  /// Has screen readers read the text aloud, although the focus is elsewhere. For a text that has changed.
  void Announce();
};

/// A push button or a check box.
class CButton : public CWnd {};

/// A read-only multi-line edit without a caret. Ctrl+A selects everything; Tab, Enter and Escape go to the
/// dialog.
class CReadOnlyEdit : public CWnd {
 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;
};
