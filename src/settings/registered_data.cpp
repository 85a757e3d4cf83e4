#include "settings/registered_data.h"

#include <windows.h>

#include "log/log_texts.h"
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/version_resource.h"
#include "product/identity.h"
#include "settings/registered_texts.h"
#include "text/text.h"

namespace {

constexpr wchar_t kModeOneRoot[] = L"SOFTWARE\\Wow6432Node";

std::wstring KeyPath(bool mode_one, const wchar_t* below_root, std::wstring_view name) {
  return std::wstring(mode_one ? kModeOneRoot : L"SOFTWARE").append(below_root).append(name);
}

}  // namespace

void KeptFacts::BuildMakerKeyPath() {
  MakerKeyPath =
      KeyPath(RegistryModeOne, L"\\" TAVREL_MAKER "\\" TAVREL_PRODUCT "\\", identity::kProductVersion);
}

void KeptFacts::BuildUninstallKeyPath() {
  UninstallKeyPath =
      KeyPath(RegistryModeOne, L"\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\", identity::kProductLabel);
}

void RegisteredDataEntries::Report(std::wstring_view text, std::int32_t code) {
  if (text.empty()) return;
  log_.Append(text);
  if (code == ERROR_SUCCESS) return;
  log_.Append(std::wstring(log_texts::kError).append(text::FormatDecimal(code)));
}

void RegisteredDataEntries::SetMode(bool mode_one) {
  facts_.RegistryModeOne = mode_one;
  facts_.BuildMakerKeyPath();
  facts_.BuildUninstallKeyPath();
}

bool RegisteredDataEntries::IdentifyRegistryMode() {
  LSTATUS error = ERROR_SUCCESS;
  const platform::UniqueRegistryKey key = platform::OpenMachineKey(kModeOneRoot, error);
  if (key) {
    log_.Append(registered_texts::kModeOne);
  } else if (error == ERROR_FILE_NOT_FOUND) {
    log_.Append(registered_texts::kModeTwo);
  } else {
    Report(registered_texts::kModeFailed, error);
  }
  SetMode(static_cast<bool>(key));
  return facts_.RegistryModeOne;
}

void RegisteredDataEntries::ReadTagOne() {
  Read(registered_texts::kTagOne, TagOne);
}

void RegisteredDataEntries::ReadClientVersion() {
  Read(registered_texts::kClientVersion, ClientVersion);
}

void RegisteredDataEntries::ReadTagTwo() {
  std::wstring value;
  Read(registered_texts::kTagTwo, value);
  if (value.empty()) return;
  TagTwo = value;
  facts_.IconPath = value;
}

void RegisteredDataEntries::ReadTagThree() {
  Read(registered_texts::kTagThree, TagThree);
}

void RegisteredDataEntries::ReadInstallPath() {
  Read(registered_texts::kInstallPath, facts_.InstallPath);
}

void RegisteredDataEntries::ReadInstallPathLogged() {
  Read(registered_texts::kInstallPathLogged, facts_.InstallPath);
}

void RegisteredDataEntries::Read(const RegisteredReader& reader, std::wstring& field) {
  if (ReadKey(reader, field) != ERROR_FILE_NOT_FOUND) return;
  if (!reader.falls_back || !facts_.RegistryModeOne) return;
  const RegisteredReader alternative{.maker_key = reader.maker_key,
                                     .value = reader.value,
                                     .open_failed = reader.alternative_open_failed,
                                     .open_missing = reader.alternative_open_failed,
                                     .completed = reader.alternative_completed,
                                     .empty = reader.alternative_empty,
                                     .query_failed = reader.alternative_query_failed,
                                     .query_missing = reader.alternative_query_failed};
  SetMode(false);
  if (ReadKey(alternative, field) == ERROR_SUCCESS) {
    log_.Append(registered_texts::kModeTwo);
  } else {
    SetMode(true);
  }
}

std::int32_t RegisteredDataEntries::ReadKey(const RegisteredReader& reader, std::wstring& field) {
  LSTATUS error = ERROR_SUCCESS;
  const platform::UniqueRegistryKey key =
      platform::OpenMachineKey(reader.maker_key ? facts_.MakerKeyPath : facts_.UninstallKeyPath, error);
  if (!key) {
    Report(error == ERROR_FILE_NOT_FOUND ? reader.open_missing : reader.open_failed, error);
    return error;
  }
  std::wstring value;
  error = platform::QueryText(key.get(), reader.value, value);
  if (error != ERROR_SUCCESS) {
    Report(error == ERROR_FILE_NOT_FOUND ? reader.query_missing : reader.query_failed, error);
    return error;
  }
  if (!value.empty()) field = value;
  Report(value.empty() ? reader.empty : reader.completed, error);
  return error;
}

std::optional<platform::FileVersion> RegisteredDataEntries::ReadExecutableVersion() const {
  // The second name is another file only in a folder with case-sensitive names.
  for (const wchar_t* name : {L"" TAVREL_IMAGE, L"" TAVREL_IMAGE_LOWER}) {
    const std::wstring path = GetInstallPath().append(L"\\").append(name);
    if (platform::FileExists(path)) return platform::ReadFileVersion(path);
  }
  return std::nullopt;
}

void RegisteredDataEntries::ReadProductFileVersion() {
  executable_version_ = ReadExecutableVersion();
  if (executable_version_) ProductFileVersion = platform::FileVersionText(*executable_version_);
}

void RegisteredDataEntries::ReadProductVersionNumber() {
  if (!executable_version_) executable_version_ = ReadExecutableVersion();
  if (!executable_version_) return;
  const auto& [first, second, third, fourth] = *executable_version_;
  ProductVersionThird = text::FormatDecimal(third);
  ProductVersionFourth = text::FormatDecimal(fourth);
  ProductVersionNumber = text::FoldVersion(first, second, third, fourth);
}
