#include "expected.h"

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <cstdlib>

#include "platform/error_text.h"
#include "support/machine.h"
#include "text/text.h"

std::wstring expected::Log(std::wstring_view text) {
  static const auto words = support::Rows("integration/log_words.txt");
  std::wstring log;
  for (std::wstring& part : support::Split(text)) {
    if (part.empty()) continue;
    if (part.starts_with(L"@")) part.replace(0, 1, L"Registered data entries check, ");
    if (part.starts_with(L"MESSAGE ")) part = platform::SystemMessage(std::stoul(part.substr(8)));
    for (const auto& word : words) {
      if (part == word[0]) part = word.size() == 2 ? word[1] : word[1] + L';' + word[2];
    }
    text::ReplaceAll(part, L"|", L"\n\n");
    log += part + L"\n\n";
  }
  return log;
}

std::map<std::wstring, std::wstring> expected::Setup(std::wstring_view text) {
  std::map<std::wstring, std::wstring> setup;
  for (const std::wstring& part : support::Split(text)) {
    const std::size_t equals = part.find(L'=');
    if (!part.empty()) setup[part.substr(0, equals)] = equals == part.npos ? L"" : part.substr(equals + 1);
  }
  return setup;
}

std::shared_ptr<void> Obstruct(const std::wstring& what, const std::wstring& file) {
  const auto parts = support::Split(what, L'-');
  if (parts.size() < 2) return {};
  const DWORD code = std::stoul(parts[1]);
  if (parts[0] == L"held") return std::make_shared<support::ShareLock>(file, code);
#define REFUSABLE(function, result) \
  if (parts[0] == L"" #function)    \
  return std::make_shared<support::ImportHook<function>>(#function, code, result)
  REFUSABLE(CreateDirectoryW, FALSE);
  REFUSABLE(CreateFileW, INVALID_HANDLE_VALUE);
  REFUSABLE(CreateMutexW, nullptr);
  REFUSABLE(InternetConnectW, nullptr);
  REFUSABLE(PathFileExistsW, FALSE);
  REFUSABLE(RegOpenKeyExW, static_cast<LSTATUS>(code));
  REFUSABLE(SHGetFolderPathW, E_FAIL);
  std::abort();
}
