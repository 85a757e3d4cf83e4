#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "settings/registered_data.h"
#include "settings/server_settings.h"

/// The run's shared state: set at start-up, read by the check and the pages. The kept facts are those of the
/// start-up check.
class RunState : public ServerSettings, public KeptFacts {
 public:
  bool CheckFailed = false;             ///< copy of the last start-up check's failure flag
  bool LaunchedFromPatchCheck = false;  ///< the sheet opens with the result of a start-up check
  std::wstring ProgramVersion;
  std::wstring WindowTitle;
  std::wstring ProductLabel;
  /// Shows a text to the user and waits for OK. Set by the application object.
  std::function<void(std::wstring_view)> WarnUser;
};
