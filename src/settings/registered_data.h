#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "log/log_sink.h"
#include "platform/version_resource.h"
#include "settings/run_state.h"

struct RegisteredReader;

/// The facts that the product's installer recorded, read by one check. Every operation logs to the sink of
/// the constructor; a failure is logged with its code and leaves the field unchanged.
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
  /// When the first place has no value (error 2), these two readers try the keys directly under "SOFTWARE\".
  /// A value found there switches the rest of the check to those keys.
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

  /// Both look for "Qrt.exe", then "qrt.exe", in the install path. They leave their fields as they were when
  /// neither exists or the file has no version resource. The second uses the version that the first has
  /// read: an object serves one check, which calls both within moments.
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
  std::optional<platform::FileVersion> ReadExecutable() const;

  RegistryFacts& facts_;
  LogSink& log_;
  std::optional<platform::FileVersion> executable_;  ///< nothing until its version has been read
};
