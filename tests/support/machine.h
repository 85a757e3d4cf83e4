#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/handles.h"
#include "platform/system_text.h"
#include "product/identity.h"
#include "support/import_hook.h"

namespace support {

inline constexpr auto& Utf8 = platform::ToUtf8;

/// False under Wine.
bool OnWindows();

/// The number of lines of a log that logcheck does not know.
std::size_t UnknownLines(const std::wstring& log);

// --- Files. Paths are Windows paths. A failure is thrown.
void MakeFolder(const std::wstring& path);  ///< with every folder above it
void WriteBytes(const std::wstring& path, std::string_view bytes);
std::optional<std::string> ReadBytes(const std::wstring& path);
std::vector<std::wstring> FileNames(const std::wstring& folder);  ///< sorted; folders left out
void RemoveTree(const std::wstring& path);
/// Copies a file and replaces the target.
void CopyOver(const std::wstring& from, const std::wstring& to);

/// Keeps a file open; other processes may do only what `share` allows, and get error 32 otherwise.
struct ShareLock : platform::UniqueFile {
  explicit ShareLock(const std::wstring& path, DWORD share = 0);
};

/// A file that another process holds, without sharing it, until this program pauses for the first time.
struct HeldForAMoment {
  explicit HeldForAMoment(const std::wstring& path) : holder(std::in_place, path) {}
  std::optional<ShareLock> holder;
  const ImportHook<Sleep> pause{"Sleep", [this](DWORD) { holder.reset(); }};
};

// --- Registry, below HKEY_LOCAL_MACHINE: that of the Machine if there is one, else that of the Wine prefix.
void SetRegistryBytes(const std::wstring& key, const wchar_t* name, DWORD type, std::string_view bytes);
void SetRegistryText(const std::wstring& key, const wchar_t* name, std::wstring_view text);
void RemoveRegistryValue(const std::wstring& key, const wchar_t* name);

enum class Layout { one, two };  ///< below "SOFTWARE\Wow6432Node", directly below "SOFTWARE"
std::wstring MakerKey(Layout layout);
std::wstring UninstallKey(Layout layout);

/// A product, its utility and what they use, in the given folders. The constructor empties the folder at the
/// root and removes what a utility left in the others. On Windows it ends the program unless the environment
/// variable TAVREL_MACHINE_MAY_BE_USED_UP is 1.
class Installation {
 public:
  Installation(std::wstring folder, std::wstring user_documents, std::wstring common_data);

  const std::wstring root, documents, common;

  std::wstring Temp() const { return root + L"\\temp"; }
  std::wstring ProgramFolder() const { return root + L"\\program"; }
  std::wstring ProductFolder() const { return root + L"\\product"; }

  /// The file that a start copies where the user has no settings file.
  std::wstring Seed() const { return ProgramFolder() + L"\\korsa.ini"; }
  std::wstring SettingsFile() const {
    return (documents + std::wstring(identity::kSettingsFolder)).append(identity::kSettingsFile);
  }
  std::wstring LogFolder() const { return common + std::wstring(identity::kLogFolder); }
  std::wstring Record() const { return ProductFolder() + L"\\installedupdates.dat"; }
  std::wstring UpdateList() const { return Temp() + L"\\updates.ini"; }

  /// Registers a product in the product folder, as an installer does.
  void Install(Layout layout);
  /// Copies a stand-in executable into the product folder, in place of another one. Its file version is one
  /// of 15.0.1.0, 15.0.2.5 and 15.0.2.7.
  void PlaceExecutable(std::wstring_view version);
  /// Writes the settings file with this text below its section's heading.
  void WriteSettings(std::string_view lines);
};

/// A private machine while the object exists: HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER are
/// empty keys of this process, and Documents, common application data, the temporary folder and the program's
/// own folder are empty folders; the destructor removes them.
class Machine : public Installation {
 public:
  Machine();
  ~Machine();

 private:
  explicit Machine(const std::wstring& folder);
  ImportHook<GetModuleFileNameW> module_name_;
};

}  // namespace support
