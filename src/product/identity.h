#pragma once

#include <string_view>

#include "version.h"

/// The names of this program and of the product that it updates.
namespace identity {

inline constexpr std::wstring_view kProductVersion = L"" TAVREL_PRODUCT_VERSION;
/// Product name with its major version; also the name of the product's uninstall entry.
inline constexpr std::wstring_view kProductLabel = L"Varnexa " TAVREL_PRODUCT_VERSION;
/// Title of the sheet, and of message boxes that set no other title.
inline constexpr std::wstring_view kWindowTitle = L"" TAVREL_TITLE;
inline constexpr std::wstring_view kProgramVersion = L"" TAVREL_VERSION;
/// Image name of the product's process, and the first name of its executable.
inline constexpr std::wstring_view kProductImage = L"Qrt.exe";

/// Sub-folder of the user's Documents folder and name of the settings file in it.
inline constexpr std::wstring_view kSettingsFolder = L"\\Varnexa\\QRT15\\";
inline constexpr std::wstring_view kSettingsFile = L"korsa.ini";
/// Sub-folder of the common application data folder; created by the installer, never by the program.
inline constexpr std::wstring_view kLogFolder = L"\\Varnexa\\QRT15";

/// Update host when the settings name none: build variable TAVREL_UPDATE_HOST.
std::wstring_view DefaultUpdateHost();
/// Address of the connectivity probe: build variable TAVREL_PROBE_ADDRESS.
std::wstring_view ProbeAddress();

}  // namespace identity
