#include "ui/run_log.h"

#include "log/sheet_log.h"
#include "settings/run_state.h"

void RunLog::Write() {
  if (written_) return;
  written_ = true;
  if (run_.LaunchedFromPatchCheck) {
    file_.AppendText(run_.LogText());
  } else {
    // A sheet that could not be shown has logged nothing yet.
    if (sheet_log_.SheetLogText().empty()) sheet_log_.WriteRegularRunHeader();
    file_.AppendText(sheet_log_.SheetLogText());
  }
  file_.OpenSystemLog();
}
