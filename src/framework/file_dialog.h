#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

/// Options of a save dialog.
struct SaveDialogOptions {
  std::wstring default_extension;  ///< without its dot
  /// Pairs of description and pattern, each text followed by '|', the whole ended by one more '|'.
  std::wstring_view filter;
};

/// Asks the user for a file to save to. The dialog warns before it accepts an existing file, and does not
/// change the current folder. Returns nothing when the user cancels or the dialog cannot be shown.
std::optional<std::wstring> AskSavePath(HWND owner, const SaveDialogOptions& options);
