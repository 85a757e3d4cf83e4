#pragma once

#include <string>
#include <string_view>

#include "log/activity_log.h"

/// The settings file at the program's start. Logs to the activity log and the notes.
class ServerSettings : public ActivityLog {
 public:
  std::wstring SettingsFilePath;  ///< full path of korsa.ini; empty: built-in defaults, nothing written

  /// Creates the profile settings folder if it is missing and copies korsa.ini into it if it has none.
  /// Replaces a missing or malformed CHECKUPDATES by "TRUE". Returns false only when CHECKUPDATES is "FALSE".
  bool PrepareServerSettings();
  /// Copies korsa.ini from the program's folder to `destination`. Logs two entries and returns false on
  /// failure.
  bool CopyServerSettingsFromInstallFolder(const std::wstring& destination);
  /// Sets `SettingsFilePath` to korsa.ini in the profile settings folder; leaves it unchanged when that
  /// folder does not exist.
  void ResolveSettingsFile();

 private:
  void LogAndNote(std::wstring_view text);

  std::wstring settings_folder_;  ///< from PrepareServerSettings; empty before
};

/// The profile settings folder, ending in a backslash; empty when the shell names no Documents folder.
std::wstring GetProfileSettingsFolder();
