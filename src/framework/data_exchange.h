#pragma once

#include "framework/window.h"

/// One exchange between a dialog's controls and its object's members.
struct CDataExchange {
  HWND dialog = nullptr;
  bool saving = false;  ///< true: from the controls into the members
};

/// Attaches `control` to the dialog's control `id`, once, in whichever direction.
void DDX_Control(const CDataExchange& exchange, int id, CWnd& control);
/// Check state of control `id`: 0 or 1.
void DDX_Check(const CDataExchange& exchange, int id, int& value);
