#include "expected.h"

#include <windows.h>

#include <shlwapi.h>
#include <wininet.h>

#include <algorithm>
#include <regex>

#include "platform/system_text.h"
#include "support/machine.h"
#include "text/text.h"

std::wstring expected::Log(std::wstring_view text) {
  static const auto words = support::Rows("integration/log_words.txt", 2, 2);
  static const std::wregex word(L"[A-Z]+( [A-Z0-9]+)*");
  std::wstring log;
  for (std::wstring& part : support::Split(text)) {
    if (part.empty()) continue;
    const auto known =
        std::find_if(words.begin(), words.end(), [&](const Row& row) { return part == row[0]; });
    if (known != words.end()) {
      part = (*known)[1];
    } else if (part.starts_with(L"MESSAGE ")) {
      part = platform::SystemMessage(std::stoul(part.substr(8)));
    } else if (part.starts_with(L"...")) {
      part.replace(0, 3, L"Registered data entries check, ");
    } else if (std::regex_match(part, word)) {
      Refuse("unknown word of a log", part);
    }
    text::ReplaceAll(part, L"|", L"\n\n");
    log += part + L"\n\n";
  }
  return log;
}

std::shared_ptr<void> Obstruct(const std::wstring& what, const std::wstring& file) {
  if (what.empty()) return {};
  std::wsmatch parts;
  if (!std::regex_match(what, parts, std::wregex(L"(\\w+)-(\\d+)"))) Refuse("unknown obstacle", what);
  const DWORD code = std::stoul(parts[2]);
  if (parts[1] == L"held") return std::make_shared<support::ShareLock>(file, code);
#define REFUSABLE(function, result) \
  if (parts[1] == L"" #function)    \
  return std::make_shared<support::ImportHook<function>>(#function, code, result)
  REFUSABLE(CreateDirectoryW, FALSE);
  REFUSABLE(InternetConnectW, nullptr);
  REFUSABLE(PathFileExistsW, FALSE);
  REFUSABLE(RegOpenKeyExW, static_cast<LSTATUS>(code));
  Refuse("unknown obstacle", what);
}
