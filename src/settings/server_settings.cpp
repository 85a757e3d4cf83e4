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
bool CreateProfileSettingsFolder() {
  const std::wstring documents = platform::DocumentsFolder();
  if (documents.empty()) return false;
  const std::wstring_view levels = identity::kSettingsFolder;
  const std::size_t split = levels.find(L'\\', 1) + 1;
  const std::wstring maker = platform::AppendPath(documents, std::wstring(levels.substr(0, split)));
  if (maker.empty()) return false;
  // Another process of this program may create it at the same moment.
  if (!platform::DirectoryExists(maker) && !CreateDirectoryW(maker.c_str(), nullptr) &&
      GetLastError() != ERROR_ALREADY_EXISTS) {
    return false;
  }
  const std::wstring versioned = platform::AppendPath(maker, std::wstring(levels.substr(split)));
  return !versioned.empty() && CreateDirectoryW(versioned.c_str(), nullptr) != FALSE;
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
  if (!platform::DirectoryExists(folder) && CreateProfileSettingsFolder()) {
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

  constexpr auto key = settings_texts::kCheckUpdatesKey;
  OptionText check = ReadOption(file, key);
  if (check == OptionText::missing || check == OptionText::malformed)
    check = RepairOption(file, key, true, key, check);
  return check != OptionText::no;
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
