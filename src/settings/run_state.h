#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "log/activity_log.h"

/// The registry keys that hold the facts of the product's installer, and the last good values of two facts.
struct RegistryFacts {
  std::wstring InstallPath;      ///< value "Installpath" of the maker key
  std::wstring IconPath;         ///< copy of the uninstall entry's "DisplayIcon"
  bool RegistryModeOne = false;  ///< true: the keys are below "SOFTWARE\Wow6432Node\"
  std::wstring MakerKeyPath;
  std::wstring UninstallKeyPath;
  bool UpdateLocUrlMode = false;  ///< the update location came from "UPDATE_LOC_URL"

  /// The keys for a mode, below HKEY_LOCAL_MACHINE.
  static std::wstring MakerKey(bool mode_one);
  static std::wstring UninstallKey(bool mode_one);
  /// Each rebuilds its path from `RegistryModeOne`. Callers call both, the maker key's first.
  void BuildMakerKeyPath();
  void BuildUninstallKeyPath();
};

/// The run's shared state: set at start-up, read by the check and the pages.
class RunState : public ActivityLog, public RegistryFacts {
 public:
  bool CheckFailed = false;             ///< copy of the last start-up check's failure flag
  bool LaunchedFromPatchCheck = false;  ///< the sheet opens with the result of a start-up check
  std::wstring SettingsFilePath;        ///< full path of korsa.ini; empty: built-in defaults, nothing written
  std::wstring ProgramVersion;
  std::wstring WindowTitle;
  std::wstring ProductLabel;
  /// Shows a text to the user and waits for OK. Set by the application object.
  std::function<void(std::wstring_view)> WarnUser;

  /// Creates the profile settings folder if it is missing and copies korsa.ini into it. Replaces a missing or
  /// malformed CHECKUPDATES by "TRUE". Returns false only when CHECKUPDATES is "FALSE". Logs to the activity
  /// log and the notes.
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
