#pragma once

#include <string>

namespace platform {

/// The user's Documents folder without a backslash at its end; empty when the shell names none.
std::wstring DocumentsFolder();
/// The machine's common application data folder, made when missing; empty on failure.
std::wstring CommonAppDataFolder();
/// The folder for temporary files, with its backslash; empty on failure.
std::wstring TemporaryFolder();
/// Full path of the running program.
std::wstring ModulePath();
/// `folder` and `more` joined by exactly one backslash; empty when the result does not fit a path (260).
std::wstring AppendPath(const std::wstring& folder, const std::wstring& more);

bool FileExists(const std::wstring& path);       ///< a folder counts as well
bool DirectoryExists(const std::wstring& path);  ///< false with the last error set

}  // namespace platform
