#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "log/activity_log.h"

/// Where the product's installer recorded its facts, and the last good values of two of them.
struct RegistryFacts {
  std::wstring InstallPath;      ///< value "Installpath" of the maker key
  std::wstring IconPath;         ///< copy of the uninstall entry's "DisplayIcon"
  bool RegistryModeOne = false;  ///< true: the keys stand under "SOFTWARE\Wow6432Node\"
  std::wstring MakerKeyPath;
  std::wstring UninstallKeyPath;
  bool UpdateLocUrlMode = false;  ///< the update location came from "UPDATE_LOC_URL"

  /// The keys for a mode, below HKEY_LOCAL_MACHINE.
  static std::wstring MakerKey(bool mode_one);
  static std::wstring UninstallKey(bool mode_one);
  /// Both rebuild a path from `RegistryModeOne`; they are called together, maker key first.
  void BuildMakerKeyPath();
  void BuildUninstallKeyPath();
};

/// The run's shared state: what start-up settles and the check and the pages read.
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

  /// Prepares folder and file of the settings and reads whether updates are to be checked. Every failure
  /// answers true. Logs to the activity log and the notes.
  bool PrepareServerSettings();
  /// Copies korsa.ini from the program's own folder to `destination`; false and two entries on failure.
  bool CopyServerSettingsFromInstallFolder(const std::wstring& destination);
  /// `SettingsFilePath` becomes the profile settings folder's korsa.ini when that folder exists; otherwise
  /// it stays as it is.
  void ResolveSettingsFile();

 private:
  void LogAndNote(std::wstring_view text);

  std::wstring settings_folder_;  ///< as PrepareServerSettings has found it; empty before
};

/// The profile settings folder, ending in a backslash; empty when the shell names no Documents folder.
std::wstring GetProfileSettingsFolder();
