#pragma once

#include <windows.h>

#include <optional>
#include <string>

/// Shows `text` in a modal message box and returns the button pressed (0 when it could not be shown). `flags`
/// are those of the Windows call. An empty `title` means the application's. The owner of the box is the
/// application's active popup or main window, if there is one.
int ShowMessage(const std::wstring& text, UINT flags = MB_OK | MB_ICONWARNING,
                const std::wstring& title = {});

/// Asks the user for a file to save to. The dialog warns before it accepts an existing file, and does not
/// change the current folder. Returns nothing when the user cancels or the dialog cannot be shown.
/// `default_extension` has no dot. `filter`: pairs of description and pattern, each text followed by '|', the
/// whole ended by one more '|'.
std::optional<std::wstring> AskSavePath(HWND owner, const wchar_t* default_extension, std::wstring filter);
