#pragma once

#include <string>

namespace platform {

/// The user's Documents folder without a backslash at its end; empty when the shell names none.
std::wstring DocumentsFolder();
/// The machine's common application data folder, made when missing; empty on failure.
std::wstring CommonAppDataFolder();
/// The folder for temporary files, with its backslash; empty on failure.
std::wstring TemporaryFolder();
/// Full path of the running program; empty when it has more than 519 characters.
std::wstring ModulePath();
/// `folder` and `more` joined by exactly one backslash; empty when `folder` is empty or the result has more
/// than 259 characters.
std::wstring AppendPath(const std::wstring& folder, const std::wstring& more);

bool FileExists(const std::wstring& path);       ///< a folder counts as well
bool DirectoryExists(const std::wstring& path);  ///< false with the last error set

}  // namespace platform
