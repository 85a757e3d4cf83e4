#pragma once

#include <string>

/// The two update options of the settings file.
struct UpdateOptions {
  bool m_bSettingsFileKnown = false;  ///< the options are written only while it is true
  std::wstring m_strSettingsFile;
  // Check box states, 0 or 1: CHECKUPDATES and IGNORE_PATCH_ERROR.
  int m_bCheckOnStartup = 1;
  int m_bHideNetworkErrors = 0;

  /// Reads both options and writes their defaults where they are missing; a value of blanks, or one that
  /// cannot be read, counts as missing. Replaces a malformed CHECKUPDATES by its default. A malformed
  /// IGNORE_PATCH_ERROR stays in the file and sets CHECKUPDATES to "FALSE". An empty path changes nothing.
  void LoadUpdateOptions(const std::wstring& settings_file);
  /// Both write "TRUE" or "FALSE"; a failure is not reported.
  void WriteCheckUpdatesKey(bool value) const;
  void WriteIgnorePatchErrorKey(bool value) const;
};
