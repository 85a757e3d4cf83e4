#pragma once

#include <string>

/// The start of the product's own update, in the order of these functions. Logs nothing and shows nothing.

/// Why the update cannot be started, as a text for the user; empty when it can. `folder` and `file` are those
/// of the product executable, the folder without its last backslash.
std::wstring LaunchObstacle(const std::wstring& folder, const std::wstring& file);

/// Ends every running process of the product at once, unsaved work or not. The image name is compared
/// case-sensitively, so that one listed all in upper case stays; a process that cannot be opened is skipped.
/// Returns whether the process list was walked to its end.
bool CloseRunningProduct();

/// Has the command interpreter run `parameters` in `folder`, without a window, and does not wait for it. A
/// failure is not reported.
void LaunchUpdate(const std::wstring& folder, const std::wstring& parameters);
