#pragma once

#include <cstdint>
#include <string>

/// Update state that lives until the process ends. Used on the user-interface thread only.

/// Number of finished start-up checks (CCheckPatch).
inline std::int32_t g_nUpdateCheckCount = 0;
/// Copies of the latest start-up check's results.
inline bool g_bUpdatesAvailable = false;
inline bool g_bCheckFailed = false;
inline std::wstring g_strPatchErrorText;
/// Entries of the latest start-up check, joined by two newlines, for display.
inline std::wstring g_strPatchMessageText;
/// Set and cleared by the interactive check alone: the registered product version is the expected one.
inline bool g_bProductInstalled = false;
/// Set to 10 by an installer launch.
inline std::int32_t g_nLaunchStatus = 0;
