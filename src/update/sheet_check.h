#pragma once

#include <cstdint>
#include <string>

#include "log/activity_log.h"
#include "settings/run_state.h"

/// The interactive check of the main sheet, its status and its log. The status lives as long as the sheet.
class SheetUpdateCheck : public SheetLog {
 public:
  explicit SheetUpdateCheck(RunState& run) : SheetLog(run.DatedLog()), run_(run) {}

  std::wstring SheetTagOne;
  std::wstring SheetTagTwo;  ///< full path of the product executable
  std::wstring SheetInstallPath;
  std::wstring SheetTagThree;
  std::wstring SheetClientVersion;
  bool SheetUpdatesAvailable = false;
  bool SheetCheckFailed = false;
  std::wstring SheetErrorText;       ///< " Error : " and the code or message; empty without a failure
  std::int32_t SheetCheckCount = 0;  ///< checks that reached their end

  /// Runs one check on the calling thread; its outcome is the status above, its entries go to this log.
  /// Does nothing after a start-up check in this process.
  void RunUpdateCheck();

 protected:
  RunState& run_;

 private:
  void ClearStatus();

  KeptFacts facts_;  ///< of the interactive checks; the start-up checks have those of the RunState
};
