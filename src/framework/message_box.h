#pragma once

#include <windows.h>

#include <string>

/// Shows `text` in a modal message box and returns the button pressed (0 when it could not be shown). `flags`
/// are those of the Windows call. An empty `title` means the application's. The owner of the
/// box is the application's active popup or main window, if there is one.
int ShowMessage(const std::wstring& text, UINT flags = MB_OK | MB_ICONWARNING,
                const std::wstring& title = {});
