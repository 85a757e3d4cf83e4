#pragma once

#include <string>

/// Starts the product's self-update. The caller calls these functions in this order; they log and show
/// nothing.

/// The reason, as a text for the user, why the update cannot be started; empty when it can. `folder` and
/// `file` are those of the product executable, the folder without its last backslash.
std::wstring LaunchObstacle(const std::wstring& folder, const std::wstring& file);

/// Ends every running process of the product without a chance to save. The image name is compared
/// case-sensitively, so a process that is listed in upper case keeps running. A process that cannot be opened
/// is skipped. Returns false when the processes cannot be listed.
bool CloseRunningProduct();

/// Has the command interpreter run `parameters` in `folder`, without a window, and does not wait for it. A
/// failure is not reported.
void LaunchUpdate(const std::wstring& folder, const std::wstring& parameters);
