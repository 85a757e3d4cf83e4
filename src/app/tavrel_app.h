#pragma once

#include "framework/application.h"
#include "settings/run_state.h"

/// The program: initialises the run's shared state, then checks silently or opens the main sheet.
class CQRTTavrelUtilityApp : public CWinApp, public RunState {
 protected:
  /// Returns 0 on every path: the sheet is modal, so no message loop follows.
  BOOL InitInstance() override;

 private:
  void InitialiseFramework();
  void InitialiseRunState();
  /// Runs the check at start-up; true when the sheet has to show its result.
  bool RunPatchVerification();
  void ShowSheet();
};
