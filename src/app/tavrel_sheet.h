#pragma once

#include "framework/property_sheet.h"
#include "settings/run_state.h"
#include "ui/log_page.h"
#include "ui/patch_apply.h"
#include "update/sheet_check.h"

/// The program's main window. Owns its pages, and status and log of the interactive check.
class CTavrelSheet : public CPropertySheet, public SheetUpdateCheck {
 public:
  /// `run` outlives the sheet.
  explicit CTavrelSheet(RunState& run);

  /// Calls DoModal and returns its result. Then writes the pending entries to the dated log file, also when
  /// the sheet could not be shown.
  INT_PTR Run();

 protected:
  void OnInitDialog() override;
  bool OnCommand(int id) override;
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  PatchApply patch_page_;
  CLogTrace log_page_;
};
