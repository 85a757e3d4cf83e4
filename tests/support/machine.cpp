#include "support/machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "logcheck/log_reader.h"
#include "platform/http.h"

namespace fs = std::filesystem;

namespace support {
namespace {

void Need(bool done, const std::wstring& what) {
  if (!done) throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), Utf8(what));
}

/// The tests replace the machine's product, settings and logs. On Windows they run only where the user allows
/// it.
void RequirePermission() {
  const char* const permission = std::getenv("TAVREL_MACHINE_MAY_BE_USED_UP");
  if (!OnWindows() || (permission != nullptr && std::string_view(permission) == "1")) return;
  std::fputs(
      "These tests replace this machine's product, its settings and its logs.\n"
      "To allow that, set TAVREL_MACHINE_MAY_BE_USED_UP=1.\n",
      stderr);
  std::exit(3);
}

/// On Windows, Winsock and WinInet read their configuration below HKEY_LOCAL_MACHINE at their first use,
/// which must come before a test redirects that key.
void InitialiseNetwork() {
  static bool initialised = false;
  if (!std::exchange(initialised, true))
    wininet::InternetCheckConnectionW(L"http://localhost/", FLAG_ICC_FORCE_CONNECTION, 0);
}

/// Redirects a part of the registry to this key of the user, in which `path` is the path of this shell
/// folder.
void Redirect(HKEY root, const std::wstring& to, const wchar_t* shell_folder, const std::wstring& path) {
  platform::UniqueRegistryKey key;
  const DWORD size = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
  Need(RegCreateKeyW(HKEY_CURRENT_USER, to.c_str(), key.put()) == ERROR_SUCCESS &&
           RegSetKeyValueW(key.get(),
                           L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                           shell_folder, REG_SZ, path.c_str(), size) == ERROR_SUCCESS,
       to);
  RegOverridePredefKey(root, key.get());
}

std::wstring Below(Layout layout, const wchar_t* path) {
  return std::wstring(layout == Layout::one ? L"SOFTWARE\\Wow6432Node\\" : L"SOFTWARE\\") + path;
}

std::wstring UniqueFolder() {
  static unsigned count = 0;
  const std::string name = "tavrel-test-" + std::to_string(GetCurrentProcessId()) + "-";
  return (fs::temp_directory_path() / (name + std::to_string(++count))).lexically_normal().wstring();
}

/// The key of the machine in this folder, below the user's own.
std::wstring KeyOf(const std::wstring& root) {
  return L"Software\\" + fs::path(root).filename().wstring();
}

}  // namespace

bool OnWindows() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}

std::size_t UnknownLines(const std::wstring& log) {
  std::size_t count = 0;
  logcheck::LogReader reader([&](const logcheck::Run& run) { count += run.unknown_lines; });
  reader.Read(Utf8(log));
  reader.End();
  return count;
}

void MakeFolder(const std::wstring& path) {
  fs::create_directories(path);
}

void WriteBytes(const std::wstring& path, std::string_view bytes) {
  std::ofstream file(fs::path(path), std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  Need(file.good(), path);
}

std::optional<std::string> ReadBytes(const std::wstring& path) {
  std::ifstream file(fs::path(path), std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::wstring> FileNames(const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_directory()) names.push_back(entry.path().filename().wstring());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void RemoveTree(const std::wstring& path) {
  std::error_code error;
  fs::remove_all(path, error);
}

void CopyOver(const std::wstring& from, const std::wstring& to) {
  Need(CopyFileW(from.c_str(), to.c_str(), FALSE) != FALSE, from);
}

ShareLock::ShareLock(const std::wstring& path, DWORD share)
    : UniqueHandle(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr)) {
  Need(static_cast<bool>(*this), path);
}

void SetRegistryBytes(const std::wstring& key, const wchar_t* name, DWORD type, std::string_view bytes) {
  // The registry adds a terminator to a text that is followed by one.
  const std::string stored = std::string(bytes) + "??";
  Need(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, type, stored.data(),
                       static_cast<DWORD>(bytes.size())) == ERROR_SUCCESS,
       key);
}

void SetRegistryText(const std::wstring& key, const wchar_t* name, std::wstring_view text) {
  const std::wstring ended = std::wstring(text) + L'\0';
  SetRegistryBytes(key, name, REG_SZ,
                   {reinterpret_cast<const char*>(ended.data()), ended.size() * sizeof(wchar_t)});
}

void RemoveRegistryValue(const std::wstring& key, const wchar_t* name) {
  RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name);
}

std::wstring MakerKey(Layout layout) {
  return Below(layout, L"" TAVREL_MAKER "\\" TAVREL_PRODUCT "\\" TAVREL_PRODUCT_VERSION);
}

std::wstring UninstallKey(Layout layout) {
  return Below(layout, L"Microsoft\\Windows\\CurrentVersion\\Uninstall\\" TAVREL_PRODUCT_LABEL);
}

Installation::Installation(std::wstring folder, std::wstring user_documents, std::wstring common_data)
    : root(std::move(folder)), documents(std::move(user_documents)), common(std::move(common_data)) {
  RequirePermission();
  for (const std::wstring& old : {root, documents + L"\\" TAVREL_PRODUCT, LogFolder()}) RemoveTree(old);
  for (const std::wstring& path : {documents, common, Temp(), ProgramFolder(), ProductFolder()}) {
    MakeFolder(path);
  }
}

void Installation::Install(Layout layout) {
  SetRegistryText(MakerKey(layout), L"Version", identity::kProductVersion);
  SetRegistryText(MakerKey(layout), L"Installpath", ProductFolder());
  SetRegistryText(UninstallKey(layout), L"DisplayVersion", L"15.0.2.5");
  SetRegistryText(UninstallKey(layout), L"DisplayIcon", ProductFolder() + L"\\" TAVREL_IMAGE);
  SetRegistryText(UninstallKey(layout), L"URLUpdateInfo",
                  L"http://updates.varnexa.example/patches/updates.ini");
}

void Installation::PlaceExecutable(std::wstring_view version) {
  CopyOver(std::wstring(TAVREL_STANDIN_FOLDER).append(L"/").append(version).append(L"/" TAVREL_IMAGE),
           ProductFolder() + L"\\" TAVREL_IMAGE);
}

void Installation::WriteSettings(std::string_view lines) {
  MakeFolder(fs::path(SettingsFile()).parent_path().wstring());
  WriteBytes(SettingsFile(), std::string("[KORSA_URL]\r\n").append(lines));
}

Machine::Machine() : Machine(UniqueFolder()) {}

Machine::Machine(const std::wstring& folder)
    : Installation(folder, folder + L"\\documents", folder + L"\\common"),
      module_name_("GetModuleFileNameW", [this](HMODULE module, LPWSTR path, DWORD size) {
        if (module != nullptr) return module_name_.original(module, path, size);
        lstrcpynW(path, (ProgramFolder() + L"\\QRTTavrelUtility.exe").c_str(), static_cast<int>(size));
        return static_cast<DWORD>(lstrlenW(path));
      }) {
  InitialiseNetwork();
  Redirect(HKEY_LOCAL_MACHINE, KeyOf(root) + L"\\machine", L"Common AppData", common);
  Redirect(HKEY_CURRENT_USER, KeyOf(root) + L"\\user", L"Personal", documents);
  SetEnvironmentVariableW(L"TMP", Temp().c_str());
}

Machine::~Machine() {
  SetEnvironmentVariableW(L"TMP", fs::path(root).parent_path().c_str());
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, KeyOf(root).c_str());
  RemoveTree(root);
}

}  // namespace support
