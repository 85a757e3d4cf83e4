#include "expected.h"

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <cstdlib>
#include <map>

#include "platform/files.h"
#include "support/import_hook.h"

std::vector<std::wstring> expected::Log(std::wstring_view text) {
  static const std::map<std::wstring, std::wstring> words = {
      {L"START", L"=========== Registered Data Entries Check : Start ==========="},
      {L"END", L"=========== Registered Data Entries Check : End ==========="},
      {L"UPDATES", L"=========== Check Product Updates Availability : Start ==========="},
      {L"UPDATES END", L"=========== Check Product Updates Availability : End ============"},
      {L"RETRY", L"Product Updates Retry Attempted..."},
      {L"MODE ONE", L"Registry bit support Mode One identified."},
      {L"MODE TWO", L"Registry bit support Mode Two identified."},
      {L"MATCHED", L"Sever settings INI information matched with client side tag three information."},
      {L"NOT MATCHED", L"Sever settings INI information not matched with client side tag three information."},
      {L"INVALID", L"Patch updates failed: Invalid client tag three information found."},
      {L"MISMATCH", L" Error : Server settings INI information mismatch."},
      {L"FOUND", L"Client side request : Information found."},
      {L"FETCHED", L"Server side update check completed."},
      {L"READ", L"Read installer update file completed."},
      {L"HELD", platform::SystemMessage(ERROR_SHARING_VIOLATION)},
      {L"SAME", L"The available updates are matching with existing information."},
  };
  std::vector<std::wstring> entries;
  for (std::wstring& part : support::Split(text, L'|')) {
    if (const auto word = words.find(part); word != words.end()) part = word->second;
    if (part.starts_with(L"@")) part.replace(0, 1, L"Registered data entries check, ");
    if (part.starts_with(L"NEWER ")) part.replace(0, 5, L"Update details found. Exit code");
    if (part.starts_with(L"OLDER ")) part.replace(0, 5, L"Update details not found.Exit code");
    if (part == L"NO PACK") {
      entries.push_back(L"Installer local update file does not exists.");
      part = L"Update details not found.Exit code 3.";
    }
    if (!part.empty()) entries.push_back(part);
  }
  return entries;
}

std::shared_ptr<void> Refuse(const std::wstring& function_and_code) {
  const auto parts = support::Split(function_and_code, L'-');
  const DWORD code = std::stoul(parts[1]);
#define REFUSABLE(function, result) \
  if (parts[0] == L"" #function)    \
  return std::make_shared<support::ImportHook<function>>(#function, code, result)
  REFUSABLE(CopyFileW, FALSE);
  REFUSABLE(CreateDirectoryW, FALSE);
  REFUSABLE(CreateFileW, INVALID_HANDLE_VALUE);
  REFUSABLE(DeleteFileW, FALSE);
  REFUSABLE(HttpOpenRequestW, nullptr);
  REFUSABLE(HttpQueryInfoW, FALSE);
  REFUSABLE(HttpSendRequestW, FALSE);
  REFUSABLE(InternetCheckConnectionW, FALSE);
  REFUSABLE(InternetConnectW, nullptr);
  REFUSABLE(InternetOpenW, nullptr);
  REFUSABLE(InternetReadFile, FALSE);
  REFUSABLE(InternetSetOptionW, FALSE);
  REFUSABLE(PathFileExistsW, FALSE);
  REFUSABLE(RegOpenKeyExW, static_cast<LSTATUS>(code));
  REFUSABLE(SHGetFolderPathW, E_FAIL);
  REFUSABLE(WriteFile, FALSE);
  std::abort();
}
