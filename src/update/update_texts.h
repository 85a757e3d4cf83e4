#pragma once

#include <array>
#include <string_view>

#include "version.h"

/// Texts of the update check. Keep their spelling, blanks and uneven rule lines: support tools search for
/// them, and the patch update page searches the error texts.
namespace update_texts {

// Start and end of every check.
inline constexpr std::wstring_view kRetry = L"Product Updates Retry Attempted...";
inline constexpr std::wstring_view kEntriesStart =
    L"=========== Registered Data Entries Check : Start ===========";
inline constexpr std::wstring_view kEntriesEnd =
    L"=========== Registered Data Entries Check : End ===========";
inline constexpr std::wstring_view kUpdatesStart =
    L"=========== Check Product Updates Availability : Start ===========";
inline constexpr std::wstring_view kUpdatesEnd =
    L"=========== Check Product Updates Availability : End ============";

// Missing facts: the start-up check tells the user, the interactive check its log.
inline constexpr std::wstring_view kMissingFacts =
    L"Could not check patch update availability.WARNING: 101\n"
    L"Please click To Start Menu / All Programs / Varnexa "
    L"/ " TAVREL_PRODUCT_LABEL L" Update to check patch updates.";
inline constexpr std::wstring_view kVersionNotFound =
    L"Registered data entries check, version information not found.";
inline constexpr std::wstring_view kEntriesNotFound =
    L"Registered entries for patch availability check not found. WARNING: 101.";

// Request path.
inline constexpr std::wstring_view kUrlMode = L"Entering inside \"UPDATE_LOC_URL\" mode ";
inline constexpr std::wstring_view kHostMatched =
    L"Sever settings INI information matched with client side tag three information.";
inline constexpr std::wstring_view kHostNotMatched =
    L"Sever settings INI information not matched with client side tag three information.";
inline constexpr std::wstring_view kInvalidTagThree =
    L"Patch updates failed: Invalid client tag three information found.";
inline constexpr std::wstring_view kMismatch = L"Server settings INI information mismatch.";

// Exchange with the server.
inline constexpr wchar_t kAgent[] = L"" TAVREL_PREFIX "_TavrelUtility";
inline constexpr std::wstring_view kErrorPrefix = L" Error : ";
inline constexpr std::wstring_view kProbeFailed = L"Connect to the server not successful.";
inline constexpr std::wstring_view kCheckNetwork = L" Please check your network and permissions.";
inline constexpr std::wstring_view kOpenFailed = L"Connect to the server not successful.InternetOpen failed.";
inline constexpr std::wstring_view kOptionStatus = L"Connection option status :";
inline constexpr std::wstring_view kConnectFailed =
    L"Connect to the server not successful.InternetConnect failed.";
inline constexpr std::wstring_view kOpenRequestFailed =
    L"Connect to the server not successful.Client side open request failed.";
inline constexpr std::wstring_view kSendRequestFailed =
    L"Connect to the server not successful. Client side send request failed.";
inline constexpr std::wstring_view kFound = L"Client side request : Information found.";
inline constexpr std::wstring_view kNotFound = L"Client side request: Information not found. ";
inline constexpr std::wstring_view kStatusCode = L"Client side request: Information status code:";
inline constexpr std::wstring_view kStatusFailed = L"Client side request: Failed.";
inline constexpr std::wstring_view kFileFailed = L"Client side file update : Failed.";
inline constexpr std::wstring_view kFileReadFailed = L"Client side file update : File read failed.";
inline constexpr std::wstring_view kFileWriteFailed = L"Client side file update: File write failed.";
inline constexpr std::wstring_view kCompleted = L"Server side update check completed.";
inline constexpr std::wstring_view kCopiedMissing = L"Copied INI file does not exists.";

// Comparison.
inline constexpr std::wstring_view kRecordMissing = L"Installer local update file does not exists.";
inline constexpr std::wstring_view kRecordFound = L"Installer update file exists in local.";
inline constexpr std::wstring_view kRecordFoundInteractive =
    L"Installer update file exists in local machine.";
inline constexpr std::wstring_view kRecordRead = L"Read installer update file completed.";
inline constexpr std::wstring_view kRecordReadFailed = L"Read installer update file failed.";
inline constexpr std::wstring_view kRecordDeleted = L"Processed Installer update file exists in local.";
inline constexpr std::wstring_view kRecordDeletedInteractive =
    L"Invalid installer update file; Modified the file with actuals.";
inline constexpr std::wstring_view kRecordDenied =
    L"Not able to access Installer update file exists in local.";
inline constexpr std::wstring_view kRecordNotDeleted = L"Validating Installer update file exists in local.";
inline constexpr std::wstring_view kMatching =
    L"The available updates are matching with existing information.";
inline constexpr std::array<std::wstring_view, 4> kDetailsFound = {L"", L"Update details found. Exit code 1.",
                                                                   L"Update details found. Exit code 2.",
                                                                   L"Update details found. Exit code 3."};
inline constexpr std::array<std::wstring_view, 4> kDetailsNotFound = {
    L"", L"Update details not found.Exit code 1.", L"Update details not found.Exit code 2.",
    L"Update details not found.Exit code 3."};

/// Codes, as text, that count as a failure of the network: errors of WinInet, system errors that WinInet
/// returns, and HTTP status numbers.
inline constexpr std::array<std::wstring_view, 13> kNetworkErrorCodes = {
    L"12002", L"12007", L"12029", L"122",   L"404",   L"87",   L"408",
    L"400",   L"500",   L"12026", L"12027", L"12150", L"12153"};

}  // namespace update_texts
