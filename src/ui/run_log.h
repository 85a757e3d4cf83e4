#pragma once

#include "log/system_log.h"

class RunState;
class SheetLog;

/// The account that a run with a sheet leaves in the dated log file.
class RunLog {
 public:
  /// Both outlive it.
  RunLog(const RunState& run, SheetLog& sheet_log) : run_(run), sheet_log_(sheet_log) {}

  /// Writes the log of the check at start-up, or the sheet's, with at least the run's header. Only the first
  /// call does anything.
  void Write();

 private:
  const RunState& run_;
  SheetLog& sheet_log_;
  SystemLog file_;
  bool written_ = false;
};
