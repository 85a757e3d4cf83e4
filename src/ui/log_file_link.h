#pragma once

#include <string>

#include "ui/link_control.h"

/// The link to the dated log file: as wide as its text, in the colour of links, and a stop of the Tab key
/// where Space or Enter opens it.
class CLogFileLink : public CSysURL {
 public:
  CLogFileLink();

  /// Shows `path`, ellipsis included where it is longer than the control may be; hides the control when
  /// `path` is empty. `widest` is the width, in pixels, that the control may take.
  void ShowPath(const std::wstring& path, int widest);

 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  void DrawFocus();
};
