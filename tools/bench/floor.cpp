// The floor: the smallest program that makes the system calls of one start-up check, each once. It writes no
// log entries, decides nothing and handles no error. Started without "2", it makes the calls of a window's
// start-up instead, and shows an empty property sheet made from the utility's templates.
#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <initializer_list>

#include "resource.h"
#include "version.h"

namespace {

constexpr char kReport[] = "the floor's run\r\n";
wchar_t settings[MAX_PATH], value[1024], product[MAX_PATH], path[MAX_PATH];
BYTE block[4096], resource[4096];

void ReadVersion(const wchar_t* file) {
  DWORD ignored;
  void* version;
  UINT size;
  GetFileVersionInfoW(file, 0, GetFileVersionInfoSizeW(file, &ignored), resource);
  VerQueryValueW(resource, L"\\", &version, &size);
}

void ReadSettings() {
  SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, settings);
  PathAppendW(settings, L"" TAVREL_PRODUCT "\\" TAVREL_FOLDER);
  GetFileAttributesW(settings);
  PathAppendW(settings, L"korsa.ini");
  PathFileExistsW(settings);
  for (const wchar_t* key :
       {L"CHECKUPDATES", L"UPDATE_LOC_URL", L"UPDATE_LOC", L"IGNORE_PATCH_ERROR", L"TIMEOUT"}) {
    GetPrivateProfileStringW(L"KORSA_URL", key, L"", value, 1024, settings);
  }
}

void AskForAdministrator() {
  SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
  SECURITY_DESCRIPTOR descriptor{};
  GENERIC_MAPPING mapping{1, 2, 0, 3};
  PRIVILEGE_SET privileges{};
  HANDLE own, token;
  PSID group;
  DWORD size = sizeof privileges, granted;
  BOOL status;
  OpenThreadToken(GetCurrentThread(), TOKEN_DUPLICATE | TOKEN_QUERY, TRUE, &own);
  OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own);
  DuplicateToken(own, SecurityImpersonation, &token);
  AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0,
                           0, &group);
  ACL* list = reinterpret_cast<ACL*>(block);
  InitializeAcl(list, sizeof block, ACL_REVISION);
  AddAccessAllowedAce(list, ACL_REVISION, 3, group);
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
  SetSecurityDescriptorGroup(&descriptor, group, FALSE);
  SetSecurityDescriptorOwner(&descriptor, group, FALSE);
  AccessCheck(&descriptor, token, 1, &mapping, &privileges, &size, &granted, &status);
  FreeSid(group);
  CloseHandle(token);
  CloseHandle(own);
}

void ReadRegistry() {
  HKEY key;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Wow6432Node", 0, KEY_READ, &key) == ERROR_SUCCESS)
    RegCloseKey(key);
  const auto read = [&](const wchar_t* name, const wchar_t* of, wchar_t* to) {
    DWORD size = MAX_PATH * sizeof(wchar_t);
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 0, KEY_READ, &key);
    RegQueryValueExW(key, of, nullptr, nullptr, reinterpret_cast<BYTE*>(to), &size);
    RegCloseKey(key);
  };
  for (const wchar_t* of : {L"DisplayVersion", L"DisplayIcon", L"URLUpdateInfo"})
    read(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" TAVREL_PRODUCT_LABEL, of, path);
  read(L"SOFTWARE\\" TAVREL_MAKER "\\" TAVREL_PRODUCT "\\" TAVREL_PRODUCT_VERSION, L"Installpath", product);
}

void FetchList() {
  wchar_t list[MAX_PATH];
  GetTempPathW(MAX_PATH, list);
  PathAppendW(list, L"updates.ini");
  InternetCheckConnectionW(L"" TAVREL_PROBE_ADDRESS, FLAG_ICC_FORCE_CONNECTION, 0);
  const HINTERNET root = InternetOpenW(L"floor", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
  DWORD timeout = 60000, read = 0, size = sizeof read;
  InternetSetOptionW(root, INTERNET_OPTION_RECEIVE_TIMEOUT, &timeout, sizeof timeout);
  const HINTERNET connection = InternetConnectW(root, L"" TAVREL_UPDATE_HOST, INTERNET_DEFAULT_HTTP_PORT, L"",
                                                L"", INTERNET_SERVICE_HTTP, 0, 0);
  const wchar_t* accepted[] = {L"text/*", nullptr};
  const HINTERNET request =
      HttpOpenRequestW(connection, L"GET", L"/qrt15/updates.ini", nullptr, nullptr, accepted,
                       INTERNET_FLAG_RELOAD | INTERNET_FLAG_EXISTING_CONNECT, 0);
  HttpSendRequestW(request, nullptr, 0, nullptr, 0);
  HttpQueryInfoW(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &read, &size, nullptr);
  const HANDLE file = CreateFileW(list, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  while (InternetReadFile(request, block, sizeof block, &read) && read != 0)
    WriteFile(file, block, read, &size, nullptr);
  CloseHandle(file);
  InternetCloseHandle(request);
  InternetCloseHandle(connection);
  InternetCloseHandle(root);
  GetPrivateProfileSectionNamesW(value, 1024, list);
}

void ReadRecord() {
  PathAppendW(product, L"installedupdates.dat");
  const HANDLE file = CreateFileW(product, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  DWORD read = GetFileSize(file, nullptr);
  void* bytes = HeapAlloc(GetProcessHeap(), 0, read);
  ReadFile(file, bytes, read, &read, nullptr);
  CloseHandle(file);
}

void AppendReport() {
  SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, TRUE);
  PathAppendW(path, L"" TAVREL_PRODUCT "\\" TAVREL_FOLDER);
  GetFileAttributesW(path);
  WIN32_FIND_DATAW found;
  PathAppendW(path, L"*.log");
  const HANDLE find = FindFirstFileW(path, &found);
  if (find == INVALID_HANDLE_VALUE) lstrcpyW(found.cFileName, L"" TAVREL_PREFIX "_SystemTavrel_.log");
  while (find != INVALID_HANDLE_VALUE && FindNextFileW(find, &found)) {
  }
  FindClose(find);
  PathRemoveFileSpecW(path);
  PathAppendW(path, found.cFileName);
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  OVERLAPPED range{};
  range.OffsetHigh = 0x40000000;
  LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range);
  SetFilePointer(file, 0, nullptr, FILE_END);
  DWORD written;
  WriteFile(file, kReport, sizeof kReport - 1, &written, nullptr);
  UnlockFileEx(file, 0, 1, 0, &range);
  CloseHandle(file);
}

INT_PTR CALLBACK NoDialog(HWND, UINT, WPARAM, LPARAM) {
  return FALSE;
}

template <typename Function>
Function* Load(const wchar_t* library, const char* function) {
  return reinterpret_cast<Function*>(
      reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(library), function)));
}

// Like the utility, it loads the libraries of windows by name.
void ShowEmptySheet(HINSTANCE instance) {
  const INITCOMMONCONTROLSEX classes{sizeof classes, 0xFF};
  Load<decltype(InitCommonControlsEx)>(L"comctl32.dll", "InitCommonControlsEx")(&classes);
  Load<decltype(CoInitializeEx)>(L"ole32.dll", "CoInitializeEx")(
      nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
  GetModuleFileNameW(instance, path, MAX_PATH);
  ReadVersion(path);
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
  Load<decltype(PropertySheetW)>(L"comctl32.dll", "PropertySheetW")(&header);
}

}  // namespace

int WINAPI wWinMain([[maybe_unused]] _In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR arguments,
                    _In_ int) {
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  AskForAdministrator();
  ReadSettings();
  if (arguments[0] == L'2') {
    ReadRegistry();
    PathAppendW(product, L"" TAVREL_IMAGE);
    ReadVersion(product);
    PathRemoveFileSpecW(product);
    FetchList();
    ReadRecord();
    AppendReport();
  } else {
    ShowEmptySheet(instance);
  }
  return 0;
}
