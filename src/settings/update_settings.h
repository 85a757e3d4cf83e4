#pragma once

#include <cstdint>
#include <string>

/// In milliseconds; used if the settings have no "TIMEOUT".
inline constexpr std::int32_t kDefaultTimeoutMs = 60'000;

/// The settings that one check reads from korsa.ini.
struct UpdateSettings {
  std::wstring UpdateLocation;    ///< host name, or a complete address when it came from "UPDATE_LOC_URL"
  bool UpdateLocationSet = true;  ///< true after every reading
  bool IgnorePatchError = true;   ///< "IGNORE_PATCH_ERROR" is "TRUE"
  /// In milliseconds, also zero or negative. Every reading replaces the initial value.
  std::int32_t TimeoutMs = 60;

  /// Whether a missing or malformed "IGNORE_PATCH_ERROR" is replaced by "FALSE" in the file.
  enum class WriteBack { defaults, nothing };

  /// Reads the keys of `settings_file`; an empty path yields the defaults. `update_loc_url_mode` is set when
  /// the location came from "UPDATE_LOC_URL", cleared when the default host is used, else left. Logs nothing.
  void ReadUpdateSettings(const std::wstring& settings_file, bool& update_loc_url_mode, WriteBack write_back);
};
