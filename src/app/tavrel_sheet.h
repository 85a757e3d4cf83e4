#pragma once

#include "framework/property_sheet.h"
#include "settings/run_state.h"
#include "ui/log_page.h"
#include "ui/patch_apply.h"
#include "ui/run_log.h"
#include "update/sheet_check.h"

/// The program's main window. Owns its pages, its own check's status and log, and the text that waits for the
/// dated log file.
class CTavrelSheet : public CPropertySheet, public SheetUpdateCheck {
 public:
  /// Pages in the order of their tabs.
  enum Page : int { kPatchUpdatePage = 0, kLogPage = 1 };

  /// `run` outlives the sheet.
  explicit CTavrelSheet(RunState& run);

  /// As DoModal; the run's log is in the dated log file afterwards, whatever became of the sheet.
  INT_PTR Run();

 protected:
  void OnInitDialog() override;
  bool OnCommand(int id) override;

 private:
  RunLog run_log_;
  PatchApply patch_page_;
  CLogTrace log_page_;
};
