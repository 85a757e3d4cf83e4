#pragma once

#include <string>

/// What the patch update page shows, decided from results alone.

/// The results that the page knows of.
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

struct PageState {
  std::wstring text;
  bool install_enabled = false;
  bool retry_enabled = false;
  bool continue_offered = false;  ///< "Continue without updates" is visible and enabled
};

PageState DecidePageState(const PageResults& results);
