#pragma once

#include <string_view>

/// Texts that ServerSettings logs while it prepares the settings file, and the keys of that file.
namespace settings_texts {

inline constexpr std::wstring_view kFolderPathEmpty = L"Profile settings folder path is empty.";
inline constexpr std::wstring_view kFolderCreated = L"Profile settings directory created.";
inline constexpr std::wstring_view kFileExists = L"Server settings INI file already exists.";
inline constexpr std::wstring_view kValidationFailed = L"Server settings INI validation failed.";
inline constexpr std::wstring_view kSourceNotFound =
    L"Server settings INI file copy failed: Source path not found.";
inline constexpr std::wstring_view kCopied = L"Server settings INI file copied.";
inline constexpr std::wstring_view kCopyFailed = L"Server settings INI file copy failed.";

inline constexpr wchar_t kCheckUpdatesKey[] = L"CHECKUPDATES";
inline constexpr wchar_t kUpdateLocUrlKey[] = L"UPDATE_LOC_URL";
inline constexpr wchar_t kUpdateLocKey[] = L"UPDATE_LOC";
inline constexpr wchar_t kIgnorePatchErrorKey[] = L"IGNORE_PATCH_ERROR";
inline constexpr wchar_t kTimeoutKey[] = L"TIMEOUT";
inline constexpr wchar_t kTrue[] = L"TRUE";
inline constexpr wchar_t kFalse[] = L"FALSE";

}  // namespace settings_texts
