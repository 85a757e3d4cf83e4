#pragma once

#include <string_view>

#include "version.h"

/// Texts of the about box. Its version has two numbers only, unlike elsewhere in the program.
namespace about_texts {

inline constexpr wchar_t kMenuItem[] = L"About...";
inline constexpr wchar_t kTitle[] = L"Varnexa Tavrel Utility";
inline constexpr std::wstring_view kVersion = L"Varnexa Tavrel Utility Version : 2.0\n";
inline constexpr std::wstring_view kBuild = L"Build: ";
inline constexpr std::wstring_view kMakerNotice = L"" TAVREL_COPYRIGHT;

}  // namespace about_texts
