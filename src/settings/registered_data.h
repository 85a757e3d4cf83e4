#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "platform/version_resource.h"
#include "settings/run_state.h"

struct RegisteredReader;

/// The facts that the product's installer recorded, read by one check. The functions that read the registry
/// log to the sink of the constructor, failures with their code; ReadInstallPath logs nothing. A value that
/// is empty or cannot be read leaves its field unchanged.
class RegisteredDataEntries {
 public:
  RegisteredDataEntries(RegistryFacts& facts, LogSink& log) : facts_(facts), log_(log) {}

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
  /// In mode one, ReadTagOne and ReadClientVersion read the key directly under "SOFTWARE\" when the first key
  /// or its value does not exist (error 2). If that succeeds, the rest of the check uses the keys there.
  void ReadTagOne();
  void ReadClientVersion();
  /// Also copies the value into `IconPath`.
  void ReadTagTwo();
  void ReadTagThree();
  /// ReadInstallPath is for the check at start-up and logs nothing. ReadInstallPathLogged is for the
  /// interactive check and logs its failures.
  void ReadInstallPath();
  void ReadInstallPathLogged();
  std::wstring GetInstallPath() const { return facts_.InstallPath; }
  const RegistryFacts& Facts() const { return facts_; }

  /// Both read the version of "Qrt.exe", or else "qrt.exe", in the install path, and log nothing. Without the
  /// file or its version resource the fields keep their values. ReadProductVersionNumber sets the last three
  /// fields, and does not open the file again when ReadProductFileVersion has read it.
  void ReadProductFileVersion();
  void ReadProductVersionNumber();

 private:
  enum class Reading { done, missing, failed };

  void SetMode(bool mode_one);
  void Read(const RegisteredReader& reader, std::wstring& field);
  Reading ReadFirst(const RegisteredReader& reader, std::wstring& field);
  void ReadAlternative(const RegisteredReader& reader, std::wstring& field);
  void Report(std::wstring_view text, std::int32_t code);
  void Store(const std::wstring& value, std::wstring& field, std::wstring_view found,
             std::wstring_view empty);
  std::wstring FindProductExecutable() const;
  std::optional<platform::FileVersion> ReadExecutableVersion() const;

  RegistryFacts& facts_;
  LogSink& log_;
  std::optional<platform::FileVersion> executable_version_;  ///< nothing until it has been read
};
