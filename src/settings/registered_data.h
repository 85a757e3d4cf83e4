#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "platform/version_resource.h"

struct RegisteredReader;

/// What one check keeps for the next: the registry keys, the last good values of two facts, and whether the
/// update location is a complete address.
struct KeptFacts {
  std::wstring InstallPath;      ///< value "Installpath" of the maker key
  std::wstring IconPath;         ///< copy of the uninstall entry's "DisplayIcon"
  bool RegistryModeOne = false;  ///< true: the keys are below "SOFTWARE\Wow6432Node\"
  std::wstring MakerKeyPath;     ///< below HKEY_LOCAL_MACHINE, as the next one
  std::wstring UninstallKeyPath;
  bool UpdateLocUrlMode = false;  ///< the update location came from "UPDATE_LOC_URL"

  /// Each rebuilds its path from `RegistryModeOne`. Callers call both, the maker key's first.
  void BuildMakerKeyPath();
  void BuildUninstallKeyPath();
};

/// The facts that the product's installer recorded, read by one check. The functions that read the registry
/// log to the sink of the constructor, failures with their code; ReadInstallPath logs nothing. A value that
/// is empty or cannot be read leaves its field unchanged.
class RegisteredDataEntries {
 public:
  RegisteredDataEntries(KeptFacts& facts, LogSink& log) : facts_(facts), log_(log) {}

  std::wstring TagOne;              ///< "DisplayVersion"
  std::wstring TagTwo;              ///< "DisplayIcon": full path of the product executable
  std::wstring TagThree;            ///< "URLUpdateInfo": the update-information address
  std::wstring ClientVersion;       ///< "Version" of the maker key; read by the interactive check alone
  std::wstring ProductFileVersion;  ///< e.g. "15.0.0.36"
  std::wstring ProductVersionThird;
  std::wstring ProductVersionFourth;
  std::int32_t ProductVersionNumber = 0;  ///< the four numbers folded with a factor of ten

  /// Decides which registry layout the product's keys have and rebuilds both key paths. Returns the new
  /// `RegistryModeOne`.
  bool IdentifyRegistryMode();
  /// In mode one, if key or value does not exist (error 2), these two try the same key without "Wow6432Node".
  /// If its value can be read, mode two holds for the rest of the check.
  void ReadTagOne();
  void ReadClientVersion();
  /// Also copies the value into `IconPath`.
  void ReadTagTwo();
  void ReadTagThree();
  /// ReadInstallPath, for the start-up check, logs nothing. ReadInstallPathLogged, for the interactive check,
  /// logs its failures.
  void ReadInstallPath();
  void ReadInstallPathLogged();
  std::wstring GetInstallPath() const { return facts_.InstallPath; }

  /// Both read the version of "Qrt.exe", or else "qrt.exe", in the install path, and log nothing. Without the
  /// file or its version resource the fields keep their values. ReadProductVersionNumber sets the last three
  /// fields, and does not open the file again when ReadProductFileVersion has read it.
  void ReadProductFileVersion();
  void ReadProductVersionNumber();

 protected:
  KeptFacts& facts_;
  LogSink& log_;

 private:
  void SetMode(bool mode_one);
  void Read(const RegisteredReader& reader, std::wstring& field);
  /// Reads the present mode's key and logs the result, which it returns: a system error code.
  std::int32_t ReadKey(const RegisteredReader& reader, std::wstring& field);
  /// Logs `text`, unless it is empty, and a code that is not 0.
  void Report(std::wstring_view text, std::int32_t code);
  std::optional<platform::FileVersion> ReadExecutableVersion() const;

  std::optional<platform::FileVersion> executable_version_;  ///< nothing until it has been read
};
