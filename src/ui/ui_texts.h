#pragma once

#include <string_view>

#include "version.h"

/// Fixed texts of the pages. Keep leading, doubled and missing blanks.
namespace ui_texts {

// Status of the patch update page.
inline constexpr std::wstring_view kUpdatesAvailable =
    L" " TAVREL_PRODUCT_LABEL L" patch updates are available on our server."
    L"Click \"Install Updates\" button to initiate the update  process. ";
inline constexpr std::wstring_view kListNotFound =
    L" Varnexa has tried to connect to the update server for the auto-update feature.\n"
    L" Unable to collect the update information from the server.\n"
    L" Please click \"Retry\" button to attempt again.\n";
inline constexpr std::wstring_view kConnectionFailed =
    L" Varnexa has tried to connect to the update server for the auto-update feature.\n"
    L" The attempt to connect to the server failed. Please click \"Retry\" button to attempt again.\n";
inline constexpr std::wstring_view kNoUpdates = L" No new patches available on our server.";
inline constexpr std::wstring_view kNotInstalled =
    L" " TAVREL_PRODUCT_LABEL L" application is not installed in this machine.";
/// Part of an error text when the server has answered without the update information.
inline constexpr std::wstring_view kNotFoundStatus = L"404";

inline constexpr wchar_t kNote[] =
    L"Note: You can also check the patch availability at \"Start Menu -> All Programs "
    L"-> Varnexa -> " TAVREL_PRODUCT_LABEL L" Update\"";

// Installer launch.
inline constexpr wchar_t kPathNotFound[] =
    L"The patch application path not found.\n"
    L"Please click Start Menu / All Programs / Varnexa "
    L"/ " TAVREL_PRODUCT_LABEL L" Update to check patch updates.";
inline constexpr wchar_t kFileNotFound[] =
    L"The patch application file not found.\n"
    L"Please click Start Menu / All Programs / Varnexa "
    L"/ " TAVREL_PRODUCT_LABEL L" Update to check patch updates.";
inline constexpr wchar_t kCloseProduct[] =
    L"Varnexa is running! Varnexa will be closed before update. Do you want to continue ? ";

// Saving the log.
inline constexpr wchar_t kSaveFilter[] = L"Text File(*.txt)|*.txt; ||";
inline constexpr wchar_t kSaveExtension[] = L"txt";
inline constexpr wchar_t kBadFileName[] = L"Please provide the valid file name to save log informations";
inline constexpr wchar_t kLogSaved[] = L"Log file saved successfully.";
inline constexpr wchar_t kLogNotSaved[] = L"Log file could not be saved.";

}  // namespace ui_texts
