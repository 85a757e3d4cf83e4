#pragma once

#include <string_view>

/// The value that a reader reads, and the texts that it logs. An empty text is not logged, and neither is the
/// code that would follow it. Keep uneven blanks and missing full stops: support tools search for the texts.
struct RegisteredReader {
  bool maker_key = false;  ///< the maker key, else the uninstall entry
  const wchar_t* value = nullptr;
  std::wstring_view open_failed{};
  std::wstring_view open_missing{};  ///< the key does not exist (error 2)
  std::wstring_view completed{};
  std::wstring_view empty{};
  std::wstring_view query_failed{};
  std::wstring_view query_missing{};  ///< the value does not exist (error 2)
  // For readers that fall back to the key directly under "SOFTWARE\".
  bool falls_back = false;
  std::wstring_view alternative_open_failed{};
  std::wstring_view alternative_query_failed{};
  std::wstring_view alternative_completed{};
  std::wstring_view alternative_empty{};
};

namespace registered_texts {

inline constexpr std::wstring_view kModeOne = L"Registry bit support Mode One identified.";
inline constexpr std::wstring_view kModeTwo = L"Registry bit support Mode Two identified.";
inline constexpr std::wstring_view kModeFailed = L"Registry bit support mode  identification failed: ";

inline constexpr RegisteredReader kTagOne{
    .value = L"DisplayVersion",
    .open_failed = L"Registered data entries check, Reading tag one failed to open.",
    .open_missing = L"Registered data entries check, Reading tag one failed to open.",
    .completed = L"Registered data entries check, Reading tag one completed.",
    .empty = L"Registered data entries check, Reading tag one query failed. Value not found.",
    .query_failed = L"Registered data entries check, Reading tag one query failed. ",
    .query_missing = L"Registered data entries check, Reading tag one query failed.",
    .falls_back = true,
    .alternative_open_failed =
        L"Registered data entries check, Reading alternative tag one path failed to open.",
    .alternative_query_failed =
        L"Registered data entries check, Reading alternative tag one path query failed.",
    .alternative_completed = L"Registered data entries check, Reading alternative tag one path completed.",
    .alternative_empty =
        L"Registered data entries check, Reading alternative tag one path query failed. Value not found.",
};

inline constexpr RegisteredReader kTagTwo{
    .value = L"DisplayIcon",
    .open_failed = L"Registered data entries check, Reading tag two  failed to open.",
    .open_missing = L"Registered data entries check, Reading tag two  failed to open.",
    .completed = L"Registered data entries check, Reading tag two completed.",
    .empty = L"Registered data entries check, Reading tag two query failed. Value not found.",
    .query_failed = L"Registered data entries check, Reading tag two query failed. ",
    .query_missing = L"Registered data entries check, Reading tag two query failed. ",
};

inline constexpr RegisteredReader kTagThree{
    .value = L"URLUpdateInfo",
    .open_failed = L"Registered data entries check, Reading tag three failed to open.",
    .open_missing = L"Registered data entries check, Reading tag three failed to open.",
    .completed = L"Registered data entries check, Reading tag three completed.",
    .empty = L"Registered data entries check, Reading tag three query failed. Value not found. ",
    .query_failed = L"Registered data entries check, Reading tag three query failed.",
    .query_missing = L"Registered data entries check, Reading tag three query failed.",
};

inline constexpr wchar_t kInstallPathValue[] = L"Installpath";
inline constexpr RegisteredReader kInstallPath{.maker_key = true, .value = kInstallPathValue};
inline constexpr RegisteredReader kInstallPathLogged{
    .maker_key = true,
    .value = kInstallPathValue,
    .open_failed = L"Client side update check, level two (L1) failed",
    .open_missing = L"Client side update check, level two (L1) failed",
    .empty = L"Client side update check, level two failed. Value not found.",
    .query_failed = L"Client side update check, level two failed.",
    .query_missing = L"Client side update check, level two failed.",
};

inline constexpr RegisteredReader kClientVersion{
    .maker_key = true,
    .value = L"Version",
    .open_failed = L"Registered data entries check, version information failed to open.",
    .completed = L"Registered data entries check, version information validated.",
    .empty = L"Registered data entries check, version information failed. Value not found. ",
    .query_failed = L"Registered data entries check, version information query failed",
    .query_missing = L"Client side update check, level version (L1) failed",
    .falls_back = true,
    .alternative_open_failed = L"Client side update check, level version add-on failed.",
    .alternative_query_failed = L"Registered data entries check, alternative version path query failed.",
    .alternative_completed = L"Registered data entries check, alternative version path details found.",
    .alternative_empty =
        L"Registered data entries check, alternative version path query failed. Value not found.",
};

/// All readers that log.
inline constexpr const RegisteredReader* kReaders[] = {&kClientVersion, &kTagOne, &kTagTwo, &kTagThree,
                                                       &kInstallPathLogged};

}  // namespace registered_texts
