#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The rules of the pages that need no window.

/// The results of the checks that the content of the patch update page depends on.
struct PageResults {
  bool interactive = true;         ///< false: the sheet shows start-up checks
  bool product_installed = false;  ///< the registered product version is the expected one
  // The interactive check.
  bool sheet_updates_available = false;
  bool sheet_check_failed = false;
  std::wstring sheet_error_text = {};
  // The start-up checks: the last one's failure, and whether any of them found updates.
  bool last_check_failed = false;
  std::wstring last_check_error = {};
  bool last_updates_found = false;
};

struct PageState {
  std::wstring text;  ///< the message
  bool install_enabled = false;
  bool retry_enabled = false;
  bool continue_offered = false;  ///< "Continue without updates" is visible and enabled
};

PageState DecidePageState(const PageResults& results);

/// The file that the log is saved to when the user has chosen `path`. Adds ".txt" when there is no extension.
/// Returns nothing when there is another extension; the comparison is case-sensitive.
std::optional<std::wstring> SavedLogPath(std::wstring_view path);
