#include "settings/run_state.h"

#include "platform/folders.h"
#include "product/identity.h"

namespace {

constexpr std::wstring_view kModeOneRoot = L"SOFTWARE\\Wow6432Node";
constexpr std::wstring_view kModeTwoRoot = L"SOFTWARE";
constexpr std::wstring_view kMakerKey = L"\\" TAVREL_MAKER "\\" TAVREL_PRODUCT "\\";
constexpr std::wstring_view kUninstallKey = L"\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

}  // namespace

std::wstring RegistryFacts::MakerKey(bool mode_one) {
  return std::wstring(mode_one ? kModeOneRoot : kModeTwoRoot)
      .append(kMakerKey)
      .append(identity::kProductVersion);
}

std::wstring RegistryFacts::UninstallKey(bool mode_one) {
  return std::wstring(mode_one ? kModeOneRoot : kModeTwoRoot)
      .append(kUninstallKey)
      .append(identity::kProductLabel);
}

void RegistryFacts::BuildMakerKeyPath() {
  MakerKeyPath = MakerKey(RegistryModeOne);
}

void RegistryFacts::BuildUninstallKeyPath() {
  UninstallKeyPath = UninstallKey(RegistryModeOne);
}

std::wstring GetProfileSettingsFolder() {
  return platform::AppendPath(platform::DocumentsFolder(), std::wstring(identity::kSettingsFolder));
}

void RunState::LogAndNote(std::wstring_view text) {
  AppendLogLine(text);
  AppendNote(text);
}

void RunState::ResolveSettingsFile() {
  const std::wstring folder = settings_folder_.empty() ? GetProfileSettingsFolder() : settings_folder_;
  if (folder.empty() || !platform::DirectoryExists(folder)) return;
  SettingsFilePath = folder + std::wstring(identity::kSettingsFile);
}
