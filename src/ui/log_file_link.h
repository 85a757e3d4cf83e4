#pragma once

#include <string>

#include "ui/link_control.h"

/// The link to the dated log file. It is as wide as its text and has the colour of links. Tab moves the focus
/// to it; Space or Enter opens it.
class CLogFileLink : public CSysURL {
 public:
  CLogFileLink();

  /// Shows `path`, with an ellipsis when it is wider than `widest` pixels. Hides the control when `path` is
  /// empty.
  void ShowPath(const std::wstring& path, int widest);

 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  void DrawFocus();
};
