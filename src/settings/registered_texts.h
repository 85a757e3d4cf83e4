#pragma once

#include <string_view>

/// Which key a reader reads, and what it says. An empty text is not logged, and neither is the code that
/// would follow it. Support tools read the texts: uneven blanks and missing full stops are kept.
struct RegisteredReader {
  bool maker_key;  ///< the maker key, else the uninstall entry
  const wchar_t* value;
  std::wstring_view open_failed;
  std::wstring_view open_missing;  ///< the key does not exist (error 2)
  std::wstring_view completed;
  std::wstring_view empty;
  std::wstring_view query_failed;
  std::wstring_view query_missing;  ///< the value does not exist (error 2)
  // The place directly under "SOFTWARE\"; readers without it do not fall back.
  bool falls_back = false;
  std::wstring_view alternative_open_failed = {};
  std::wstring_view alternative_query_failed = {};
  std::wstring_view alternative_completed = {};
  std::wstring_view alternative_empty = {};
};

namespace registered_texts {

inline constexpr std::wstring_view kModeOne = L"Registry bit support Mode One identified.";
inline constexpr std::wstring_view kModeTwo = L"Registry bit support Mode Two identified.";
inline constexpr std::wstring_view kModeFailed = L"Registry bit support mode  identification failed: ";

inline constexpr RegisteredReader kTagOne{
    false,
    L"DisplayVersion",
    L"Registered data entries check, Reading tag one failed to open.",
    L"Registered data entries check, Reading tag one failed to open.",
    L"Registered data entries check, Reading tag one completed.",
    L"Registered data entries check, Reading tag one query failed. Value not found.",
    L"Registered data entries check, Reading tag one query failed. ",
    L"Registered data entries check, Reading tag one query failed.",
    true,
    L"Registered data entries check, Reading alternative tag one path failed to open.",
    L"Registered data entries check, Reading alternative tag one path query failed.",
    L"Registered data entries check, Reading alternative tag one path completed.",
    L"Registered data entries check, Reading alternative tag one path query failed. Value not found."};

inline constexpr RegisteredReader kTagTwo{
    false,
    L"DisplayIcon",
    L"Registered data entries check, Reading tag two  failed to open.",
    L"Registered data entries check, Reading tag two  failed to open.",
    L"Registered data entries check, Reading tag two completed.",
    L"Registered data entries check, Reading tag two query failed. Value not found.",
    L"Registered data entries check, Reading tag two query failed. ",
    L"Registered data entries check, Reading tag two query failed. "};

inline constexpr RegisteredReader kTagThree{
    false,
    L"URLUpdateInfo",
    L"Registered data entries check, Reading tag three failed to open.",
    L"Registered data entries check, Reading tag three failed to open.",
    L"Registered data entries check, Reading tag three completed.",
    L"Registered data entries check, Reading tag three query failed. Value not found. ",
    L"Registered data entries check, Reading tag three query failed.",
    L"Registered data entries check, Reading tag three query failed."};

inline constexpr wchar_t kInstallPathValue[] = L"Installpath";
inline constexpr RegisteredReader kInstallPath{true, kInstallPathValue, {}, {}, {}, {}, {}, {}};
inline constexpr RegisteredReader kInstallPathLogged{
    true,
    kInstallPathValue,
    L"Client side update check, level two (L1) failed",
    L"Client side update check, level two (L1) failed",
    {},
    L"Client side update check, level two failed. Value not found.",
    L"Client side update check, level two failed.",
    L"Client side update check, level two failed."};

inline constexpr RegisteredReader kClientVersion{
    true,
    L"Version",
    L"Registered data entries check, version information failed to open.",
    {},
    L"Registered data entries check, version information validated.",
    L"Registered data entries check, version information failed. Value not found. ",
    L"Registered data entries check, version information query failed",
    L"Client side update check, level version (L1) failed",
    true,
    L"Client side update check, level version add-on failed.",
    L"Registered data entries check, alternative version path query failed.",
    L"Registered data entries check, alternative version path details found.",
    L"Registered data entries check, alternative version path query failed. Value not found."};

}  // namespace registered_texts
