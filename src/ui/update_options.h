#pragma once

#include <string>

/// The two update options of the settings file, and their writing back.
struct UpdateOptions {
  bool m_bSettingsFileKnown = false;  ///< the options are written only while it is true
  std::wstring m_strSettingsFile;
  // As a check box has them, 0 or 1.
  int m_bCheckOnStartup = 1;
  int m_bHideNetworkErrors = 0;

  /// Reads both options and writes their defaults where they are missing; a value of blanks, or one that
  /// cannot be read, counts as missing. A malformed check at start-up is replaced, a malformed hiding of
  /// errors switches that check off and stays. With an empty path the options stay as they are.
  void LoadUpdateOptions(const std::wstring& settings_file);
  /// Both write "TRUE" or "FALSE"; a failure is not reported.
  void WriteCheckUpdatesKey(bool value) const;
  void WriteIgnorePatchErrorKey(bool value) const;
};
