#pragma once

#include <string>

/// Decides the content of the patch update page from the results of the checks.

/// The results that the content depends on.
struct PageResults {
  bool interactive = true;         ///< false: patch verification mode
  bool product_installed = false;  ///< the registered product version is the expected one
  // The sheet's own check.
  bool sheet_updates_available = false;
  bool sheet_check_failed = false;
  std::wstring sheet_error_text;
  // Checks of patch verification mode: the last one's failure, and whether any of them found updates.
  bool last_check_failed = false;
  std::wstring last_check_error;
  bool last_updates_found = false;
};

/// The content of the page.
struct PageState {
  std::wstring text;  ///< the message
  bool install_enabled = false;
  bool retry_enabled = false;
  bool continue_offered = false;  ///< "Continue without updates" is visible and enabled
};

PageState DecidePageState(const PageResults& results);
