#pragma once

#include <string_view>

#include "version.h"

/// The names of this program and of the product that it updates, from cmake/product.cmake.
namespace identity {

inline constexpr std::wstring_view kProductVersion = L"" TAVREL_PRODUCT_VERSION;
/// Product name with its major version; also the name of the product's uninstall entry.
inline constexpr std::wstring_view kProductLabel = L"" TAVREL_PRODUCT_LABEL;
/// Title of the sheet, and of message boxes that set no other title.
inline constexpr std::wstring_view kWindowTitle = L"" TAVREL_TITLE;
inline constexpr std::wstring_view kProgramVersion = L"" TAVREL_VERSION;
/// Image name of the product's process, and the first name of its executable.
inline constexpr std::wstring_view kProductImage = L"" TAVREL_IMAGE;

/// Sub-folder of the user's Documents folder and name of the settings file in it.
inline constexpr std::wstring_view kSettingsFolder = L"\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER "\\";
inline constexpr std::wstring_view kSettingsFile = L"korsa.ini";
/// Sub-folder of the common application data folder; created by the installer, never by the program.
inline constexpr std::wstring_view kLogFolder = L"\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER;

/// Update host when the settings name none.
inline constexpr std::wstring_view kDefaultUpdateHost = L"" TAVREL_UPDATE_HOST;
/// Address of the connectivity probe.
inline constexpr wchar_t kProbeAddress[] = L"" TAVREL_PROBE_ADDRESS;

}  // namespace identity
