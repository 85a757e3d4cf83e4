#pragma once

#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "settings/run_state.h"
#include "update/update_engine.h"

/// The start-up check. The constructor runs a complete check on the calling thread; afterwards the fields of
/// the engine hold its results, and the globals of process_state.h hold copies. Entries go to the activity
/// log.
class CCheckPatch final : LogSink, public UpdateEngine {
 public:
  explicit CCheckPatch(RunState& run);

  /// Entries of this check, joined by two newlines.
  const std::wstring& MessageText() const { return message_text_; }

  void ReadUpdateSettings();
  // These also set the globals.
  void SetErrorText(std::wstring_view text) override;
  void SetCheckFailed(bool failed) override;
  void SetUpdatesAvailable(bool available) override;

 private:
  void Append(std::wstring_view entry) override;

  RunState& run_;
  std::wstring message_text_;
};
