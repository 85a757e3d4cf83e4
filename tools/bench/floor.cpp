// The floor: the smallest program that makes the system calls of one start-up check, each once. It writes no
// log entries, decides nothing and handles no error. Started without "2", it makes the calls of a window's
// start-up instead, and shows an empty property sheet made from the utility's templates. Where a wrapper of
// src/platform is nothing but the call, it uses the wrapper.
#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <wininet.h>

#include <initializer_list>
#include <string>

#include "platform/administrator.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "platform/http.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/sharing.h"
#include "platform/system_library.h"
#include "platform/version_resource.h"
#include "product/identity.h"
#include "resource.h"
#include "update/check_rules.h"
#include "update/section_names.h"

namespace {

void ReadSettings() {
  const std::wstring folder =
      platform::AppendPath(platform::DocumentsFolder(), std::wstring(identity::kSettingsFolder));
  const std::wstring file = folder + std::wstring(identity::kSettingsFile);
  platform::DirectoryExists(folder);
  platform::FileExists(file);
  wchar_t value[1024];
  for (const wchar_t* key :
       {L"CHECKUPDATES", L"UPDATE_LOC_URL", L"UPDATE_LOC", L"IGNORE_PATCH_ERROR", L"TIMEOUT"}) {
    GetPrivateProfileStringW(L"KORSA_URL", key, L"", value, 1024, file.c_str());
  }
}

/// The product's folder.
std::wstring ReadRegistry() {
  std::wstring value;
  const auto read = [&](const wchar_t* key, const wchar_t* name) {
    LSTATUS error = ERROR_SUCCESS;
    platform::QueryText(platform::OpenMachineKey(key, error).get(), name, value);
  };
  LSTATUS error = ERROR_SUCCESS;
  platform::OpenMachineKey(L"SOFTWARE\\Wow6432Node", error);
  for (const wchar_t* name : {L"DisplayVersion", L"DisplayIcon", L"URLUpdateInfo"})
    read(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" TAVREL_PRODUCT_LABEL, name);
  read(L"SOFTWARE\\" TAVREL_MAKER "\\" TAVREL_PRODUCT "\\" TAVREL_PRODUCT_VERSION, L"Installpath");
  return value;
}

void FetchList(const std::wstring& list) {
  wininet::InternetCheckConnectionW(L"" TAVREL_PROBE_ADDRESS, FLAG_ICC_FORCE_CONNECTION, 0);
  const platform::UniqueInternet root(
      wininet::InternetOpenW(L"floor", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0));
  DWORD timeout = 60000, read = 0, size = sizeof read;
  wininet::InternetSetOptionW(root.get(), INTERNET_OPTION_RECEIVE_TIMEOUT, &timeout, sizeof timeout);
  const platform::UniqueInternet connection(wininet::InternetConnectW(
      root.get(), L"" TAVREL_UPDATE_HOST, INTERNET_DEFAULT_HTTP_PORT, L"", L"", INTERNET_SERVICE_HTTP, 0, 0));
  const wchar_t* accepted[] = {L"text/*", nullptr};
  const platform::UniqueInternet request(
      wininet::HttpOpenRequestW(connection.get(), L"GET", L"/qrt15/updates.ini", nullptr, nullptr, accepted,
                                INTERNET_FLAG_RELOAD | INTERNET_FLAG_EXISTING_CONNECT, 0));
  wininet::HttpSendRequestW(request.get(), nullptr, 0, nullptr, 0);
  wininet::HttpQueryInfoW(request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &read, &size,
                          nullptr);
  const platform::UniqueFile file =
      platform::OpenShared(list, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS);
  char block[4096];
  while (wininet::InternetReadFile(request.get(), block, sizeof block, &read) && read != 0)
    platform::WriteAll(file.get(), {block, read});
}

void AppendReport() {
  const std::wstring folder = platform::CommonAppDataFolder().append(identity::kLogFolder);
  platform::DirectoryExists(folder);
  std::wstring name = L"" TAVREL_PREFIX "_SystemTavrel_.log";
  {
    WIN32_FIND_DATAW found{};
    const platform::UniqueFind find(FindFirstFileW((folder + L"\\*.log").c_str(), &found));
    for (bool more{find}; more; more = FindNextFileW(find.get(), &found) != FALSE) name = found.cFileName;
  }
  const platform::UniqueFile file =
      platform::OpenShared(folder + L"\\" + name, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
  platform::AppendAll(file.get(), "the floor's run\r\n");
}

INT_PTR CALLBACK NoDialog(HWND, UINT, WPARAM, LPARAM) {
  return FALSE;
}

// Like the utility, it loads the libraries of windows by name.
void ShowEmptySheet(HINSTANCE instance) {
  platform::SystemLibrary controls(L"comctl32.dll"), com(L"ole32.dll");
  const INITCOMMONCONTROLSEX classes{sizeof classes, 0xFF};
  platform::SystemFunction<decltype(&InitCommonControlsEx)>(controls, "InitCommonControlsEx")(&classes);
  platform::SystemFunction<decltype(&CoInitializeEx)>(com, "CoInitializeEx")(
      nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
  platform::ReadFileVersion(platform::ModulePath());
  PROPSHEETPAGEW pages[2]{};
  for (PROPSHEETPAGEW& page : pages) {
    page.dwSize = sizeof page;
    page.hInstance = instance;
    page.pszTemplate = MAKEINTRESOURCEW(&page == pages ? IDD_UPDATES : IDD_LOG);
    page.pfnDlgProc = NoDialog;
  }
  PROPSHEETHEADERW header{};
  header.dwSize = sizeof header;
  header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_NOCONTEXTHELP;
  header.hInstance = instance;
  header.pszCaption = L"floor";
  header.nPages = 2;
  header.ppsp = pages;
  platform::SystemFunction<decltype(&PropertySheetW)>(controls, "PropertySheetW")(&header);
}

}  // namespace

int WINAPI wWinMain([[maybe_unused]] _In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR arguments,
                    _In_ int) {
  platform::SearchSystemFolderOnly();
  platform::IsRunningAsAdmin();
  ReadSettings();
  if (arguments[0] != L'2') {
    ShowEmptySheet(instance);
    return 0;
  }
  const std::wstring product = ReadRegistry(), list = platform::TemporaryFolder() + L"updates.ini";
  platform::ReadFileVersion(product + L"\\" TAVREL_IMAGE);
  FetchList(list);
  platform::ReadProfileSectionNames(list, kSectionNamesCapacity);
  platform::ReadWholeFile(product + L"\\installedupdates.dat", kRecordSizeLimit);
  AppendReport();
  return 0;
}
