#pragma once

#include <string>

#include "log/log_sink.h"
#include "settings/run_state.h"
#include "update/update_engine.h"

/// Hands every entry on to the activity log and keeps it for display.
class CheckLog : public LogSink {
 public:
  explicit CheckLog(ActivityLog& log) : log_(log) {}
  void Append(std::wstring_view entry) override;
  /// The entries so far, joined by two newlines.
  const std::wstring& Text() const { return text_; }

 private:
  ActivityLog& log_;
  std::wstring text_;
};

/// The check at start-up. Constructing one runs a complete check on the calling thread; afterwards its
/// members tell what it found. The mirrors of process_state.h follow it.
class CCheckPatch : private CheckLog, public UpdateEngine {
 public:
  explicit CCheckPatch(RunState& run);

  /// Entries of this check, joined by two newlines.
  const std::wstring& MessageText() const { return Text(); }

 private:
  void ReadFacts(RunState& run, bool first_check);
  void CheckAvailability(RunState& run);
};
