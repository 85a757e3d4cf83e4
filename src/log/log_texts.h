#pragma once

#include <string_view>

#include "version.h"

/// The log's fixed texts. Keep their blanks and spelling ("verfication"): support tools search for them.
namespace log_texts {

// Run headers.
inline constexpr std::wstring_view kHeaderRule = L"====================================================";
inline constexpr std::wstring_view kFileVersion = L" File Version : ";
inline constexpr std::wstring_view kDateTime = L" Date/Time : ";
inline constexpr wchar_t kDateTimeFormat[] = L"%A %H:%M, %B %d, %Y";
inline constexpr std::wstring_view kBuildVersion = L" Build Version : NA";
inline constexpr std::wstring_view kNotAvailable = L"NA";
inline constexpr std::wstring_view kAppMode = L"App  Mode: ";
inline constexpr std::wstring_view kAdmin = L"Admin";
inline constexpr std::wstring_view kUser = L"User";
inline constexpr std::wstring_view kUserMode = L", User Mode: NA, ";
inline constexpr std::wstring_view kInvokedByProduct = L"Invoke Mode: Patch verfication.";
inline constexpr std::wstring_view kInvokedByUser = L"Invoke Mode: Regular.";

// Dated log files.
inline constexpr std::wstring_view kFilePrefix = L"" TAVREL_PREFIX "_SystemTavrel_";
inline constexpr wchar_t kFileDateFormat[] = L"%d%b%Y_%I_%M_%p";
inline constexpr std::wstring_view kFileExtension = L".log";
inline constexpr wchar_t kErrorLineFormat[] = L"%B %d, %Y %A %H:%M: ";
inline constexpr std::wstring_view kCreationFailed = L"Error in System Tavrel Log File creation.";
inline constexpr std::wstring_view kUpdateFailed = L"Error in System Tavrel Log File updates.";
inline constexpr std::string_view kHistoryFailed =
    "Error in System Tavrel Log File updates while reading old history informations.";

/// Precedes a Windows error code that is logged as a separate entry.
inline constexpr std::wstring_view kError = L"Error : ";

}  // namespace log_texts
