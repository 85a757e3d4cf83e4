#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

/// What a save dialog offers.
struct SaveDialogOptions {
  std::wstring default_extension;  ///< without its dot
  /// Pairs of description and pattern, each text followed by '|', the whole ended by one more '|'.
  std::wstring_view filter;
};

/// Asks for a file to save to; warns before an existing one would be replaced and leaves the current folder
/// as it is. Empty when the user cancels or the dialog cannot be shown.
std::optional<std::wstring> AskSavePath(HWND owner, const SaveDialogOptions& options);
