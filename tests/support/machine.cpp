#include "support/machine.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/text.h"

namespace support {
namespace {

constexpr wchar_t kShellFolders[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

void Need(bool done, const std::wstring& what) {
  if (done) return;
  std::fprintf(stderr, "test set-up failed (error %lu): %s\n", GetLastError(), Utf8(what).c_str());
  std::exit(3);
}

platform::UniqueRegistryKey CreateKey(HKEY root, const std::wstring& path) {
  platform::UniqueRegistryKey key;
  Need(RegCreateKeyW(root, path.c_str(), key.put()) == ERROR_SUCCESS, path);
  return key;
}

void SetText(HKEY root, const std::wstring& path, const wchar_t* name, std::wstring_view value) {
  const std::wstring text(value);
  const DWORD size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  Need(RegSetKeyValueW(root, path.c_str(), name, REG_SZ, text.c_str(), size) == ERROR_SUCCESS, path);
}

std::wstring Below(Layout layout, const wchar_t* path) {
  return std::wstring(layout == Layout::one ? L"SOFTWARE\\Wow6432Node\\" : L"SOFTWARE\\") + path;
}

std::wstring UniqueName() {
  static std::atomic<unsigned> count{0};
  return L"tavrel-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

}  // namespace

void MakeFolder(const std::wstring& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  Need(!error, path);
}

void WriteBytes(const std::wstring& path, std::string_view bytes) {
  std::ofstream file(std::filesystem::path(path), std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  Need(file.good(), path);
}

std::optional<std::string> ReadBytes(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::wstring> FileNames(const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (!entry.is_directory()) names.push_back(entry.path().filename().wstring());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void SetWriteTime(const std::wstring& path, std::uint64_t time) {
  const HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  const FILETIME value{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
  Need(SetFileTime(file, nullptr, nullptr, &value) != FALSE, path);
  CloseHandle(file);
}

void RemoveTree(const std::wstring& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
}

std::wstring StandIn(std::wstring_view version) {
  return std::wstring(TAVREL_STANDIN_FOLDER).append(L"/").append(version).append(L"/Qrt.exe");
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
  SetText(HKEY_LOCAL_MACHINE, key, name, text);
}

void MakeRegistryKey(const std::wstring& key) {
  CreateKey(HKEY_LOCAL_MACHINE, key);
}

void RemoveRegistryValue(const std::wstring& key, const wchar_t* name) {
  RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name);
}

std::wstring MakerKey(Layout layout) {
  return Below(layout, L"NORVIK Software Inc.\\Varnexa\\15.0");
}

std::wstring UninstallKey(Layout layout) {
  return Below(layout, L"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0");
}

Machine::Machine()
    : name_(UniqueName()),
      temp_before_(std::filesystem::temp_directory_path().wstring()),
      root_(std::filesystem::path(temp_before_ + L"\\" + name_).lexically_normal().wstring()),
      machine_key_(CreateKey(HKEY_CURRENT_USER, L"Software\\" + name_ + L"\\machine")),
      user_key_(CreateKey(HKEY_CURRENT_USER, L"Software\\" + name_ + L"\\user")),
      module_name_("GetModuleFileNameW", [this](HMODULE module, wchar_t* path, DWORD size) {
        if (module != nullptr) return module_name_.original(module, path, size);
        lstrcpynW(path, (ProgramFolder() + L"\\QRTTavrelUtility.exe").c_str(), static_cast<int>(size));
        return static_cast<DWORD>(lstrlenW(path));
      }) {
  for (const std::wstring& folder :
       {Documents(), CommonAppData(), Temp(), ProgramFolder(), ProductFolder()}) {
    MakeFolder(folder);
  }
  SetText(machine_key_.get(), kShellFolders, L"Common AppData", CommonAppData());
  SetText(user_key_.get(), kShellFolders, L"Personal", Documents());
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine_key_.get());
  RegOverridePredefKey(HKEY_CURRENT_USER, user_key_.get());
  SetEnvironmentVariableW(L"TMP", Temp().c_str());
}

Machine::~Machine() {
  SetEnvironmentVariableW(L"TMP", temp_before_.c_str());
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + name_).c_str());
  RemoveTree(root_);
}

Product Machine::DefaultProduct() const {
  Product product;
  product.tag_two = ProductFolder() + L"\\Qrt.exe";
  product.install_path = ProductFolder();
  return product;
}

void Machine::Install(Layout layout, const Product& product) {
  const auto set = [](const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    MakeRegistryKey(key);
    if (!text.empty()) SetRegistryText(key, name, text);
  };
  set(MakerKey(layout), L"Version", product.version);
  set(MakerKey(layout), L"Installpath", product.install_path);
  set(UninstallKey(layout), L"DisplayVersion", product.tag_one);
  set(UninstallKey(layout), L"DisplayIcon", product.tag_two);
  set(UninstallKey(layout), L"URLUpdateInfo", product.tag_three);
}

void Machine::PlaceExecutable(std::wstring_view version) {
  Need(CopyFileW(StandIn(version).c_str(), (ProductFolder() + L"\\Qrt.exe").c_str(), FALSE) != FALSE,
       StandIn(version));
}

void Machine::WriteSettings(std::string_view lines) {
  MakeFolder(Documents() + L"\\Varnexa\\QRT15");
  WriteBytes(SettingsFile(), std::string("[KORSA_URL]\r\n").append(lines));
}

}  // namespace support
