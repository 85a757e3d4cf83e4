#pragma once

#include <string>
#include <string_view>

/// The differences between the check at start-up and the interactive check.
struct CheckVariant {
  const wchar_t* agent = nullptr;  ///< agent name of the internet session; null: none
  std::wstring_view record_found;
  std::wstring_view record_deleted;
  // Copies of the results outside the check; null: none.
  bool* updates_available_mirror = nullptr;
  bool* check_failed_mirror = nullptr;
  std::wstring* error_text_mirror = nullptr;
};
