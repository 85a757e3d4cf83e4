#pragma once

#include "framework/application.h"
#include "settings/run_state.h"

/// The program: initialises the run's shared state, then runs the start-up check or opens the main sheet.
class CQRTTavrelUtilityApp : public CWinApp, public RunState {
 protected:
  /// Returns 0 on every path: the sheet runs its own message loop, so none follows.
  BOOL InitInstance() override;

 private:
  void InitialiseRunState();
  /// True when the sheet has to show the check's result.
  bool RunStartUpCheck();
};
