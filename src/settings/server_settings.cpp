#include "settings/server_settings.h"

#include <windows.h>

#include "log/log_texts.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/profile.h"
#include "product/identity.h"
#include "settings/option.h"
#include "settings/settings_texts.h"
#include "text/text.h"

namespace {

// Creates one level at a time, so that an existing product folder keeps its security.
bool CreateProfileSettingsFolder(const std::wstring& folder) {
  const std::wstring maker = folder.substr(0, folder.rfind(L'\\', folder.size() - 2) + 1);
  // Another process of this program may create it at the same moment.
  if (!platform::DirectoryExists(maker) && !CreateDirectoryW(maker.c_str(), nullptr) &&
      GetLastError() != ERROR_ALREADY_EXISTS) {
    return false;
  }
  return CreateDirectoryW(folder.c_str(), nullptr) != FALSE;
}

/// Empty when the program's own path is not known.
std::wstring SeedFile() {
  const std::wstring module = platform::ModulePath();
  if (module.empty()) return {};
  return std::wstring(text::SplitAtLastBackslash(module).folder)
      .append(L"\\")
      .append(identity::kSettingsFile);
}

}  // namespace

std::wstring GetProfileSettingsFolder() {
  return platform::AppendPath(platform::DocumentsFolder(), std::wstring(identity::kSettingsFolder));
}

void ServerSettings::LogAndNote(std::wstring_view text) {
  AppendLogLine(text);
  AppendNote(text);
}

void ServerSettings::ResolveSettingsFile() {
  const std::wstring folder = settings_folder_.empty() ? GetProfileSettingsFolder() : settings_folder_;
  if (folder.empty() || !platform::DirectoryExists(folder)) return;
  SettingsFilePath = folder + std::wstring(identity::kSettingsFile);
}

bool ServerSettings::PrepareServerSettings() {
  settings_folder_ = GetProfileSettingsFolder();
  const std::wstring& folder = settings_folder_;
  if (folder.empty()) {
    LogAndNote(settings_texts::kFolderPathEmpty);
    return true;
  }
  if (!platform::DirectoryExists(folder) && CreateProfileSettingsFolder(folder)) {
    LogAndNote(settings_texts::kFolderCreated);
  }
  if (!platform::DirectoryExists(folder)) return true;

  const std::wstring file = folder + std::wstring(identity::kSettingsFile);
  if (platform::FileExists(file)) {
    LogAndNote(settings_texts::kFileExists);
  } else if (!CopyServerSettingsFromInstallFolder(file)) {
    LogAndNote(settings_texts::kValidationFailed);
    return true;
  }
  return ReadOptionOrRepair(file, settings_texts::kCheckUpdatesKey, true) != OptionText::no;
}

bool ServerSettings::CopyServerSettingsFromInstallFolder(const std::wstring& destination) {
  const std::wstring source = SeedFile();
  std::wstring_view failure = settings_texts::kSourceNotFound;
  if (platform::FileExists(source)) {
    failure = settings_texts::kCopyFailed;
    const auto bytes = platform::ReadWholeFile(source, platform::kRewriteLimit);
    // Another process of this program may create the file at the same moment.
    if (bytes && (platform::CreateWithContent(destination, *bytes) || GetLastError() == ERROR_FILE_EXISTS)) {
      LogAndNote(settings_texts::kCopied);
      return true;
    }
  }
  const DWORD error = GetLastError();
  LogAndNote(failure);
  LogAndNote(std::wstring(log_texts::kError).append(text::FormatDecimal(error)));
  return false;
}
