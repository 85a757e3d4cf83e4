#include <winsock2.h>

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <tuple>

#include "support/text.h"
#include "sweep.h"
#include "text/text.h"

namespace sweep {
namespace {

/// A function that is watched: what code knows of it, and its row.
struct Function {
  void* other;  ///< what does not stand in the import table: the hook, or the function itself
  std::wstring name{};
  std::wstring failed{};           ///< the result of a failing call: "code" or a number
  std::vector<DWORD> codes{};      ///< to fail with; none: only watched
  std::wstring opens{}, closes{};  ///< kinds of handles
};

struct Session {
  const Plan& plan;
  Run run{};
  std::map<INT_PTR, std::wstring> open{};  ///< handles and their kinds
};
thread_local Session* session = nullptr;

/// Counts a call and answers the code that it is to fail with.
DWORD Enter(const Function& function, const std::wstring& subject) {
  if (function.codes.empty()) return 0;
  auto& [plan, run, open] = *session;
  const auto same = [&](const Call& call) {
    return call.function == function.name && call.subject == subject;
  };
  const auto nth = static_cast<int>(std::count_if(run.calls.begin(), run.calls.end(), same)) + 1;
  const auto failed = [&](const Call& call) { return call.function == function.name && call.code != 0; };
  const auto before = std::find_if(run.calls.begin(), run.calls.end(), failed);
  const auto fault = plan.faults.find(run.calls.size());
  DWORD code = plan.from_then_on && before != run.calls.end() ? before->code : 0;
  if (fault != plan.faults.end()) code = fault->second;
  run.calls.push_back({function.name, subject, nth, function.codes, code});
  return code;
}

void Close(const Function& function, INT_PTR handle) {
  if (function.closes.empty()) return;
  if (session->open[handle] != function.closes)
    session->run.disorder += function.name + L" closed another's; ";
  session->open.erase(handle);
}

template <auto Imported, class Type = decltype(Imported)>
struct Hook;

template <auto Imported, class Result, class... Arguments>
struct Hook<Imported, Result(WINAPI*)(Arguments...)> {
  static Result Failure(DWORD code) {
    return (Result)(INT_PTR)(function.failed == L"code" ? static_cast<int>(code)
                                                        : std::stoi(function.failed));
  }

  static Result WINAPI Replacement(Arguments... arguments) {
    const auto original = reinterpret_cast<decltype(&Replacement)>(function.other);
    if (session == nullptr) return original(arguments...);
    std::wstring subject;
    const auto look = [&](auto argument) {
      if constexpr (std::is_convertible_v<decltype(argument), const wchar_t*>)
        if (subject.empty() && argument != nullptr) subject = argument;
    };
    (look(arguments), ...);
    if (const DWORD code = Enter(function, subject)) return support::Fail(code, Failure(code));
    const std::tuple all(arguments...);
    Close(function, (INT_PTR)std::get<0>(all));
    const Result result = original(arguments...);
    const DWORD error = GetLastError();
    const bool done = (function.failed == L"code") == (result == Failure(0));
    if (done && !function.opens.empty()) {
      INT_PTR handle = (INT_PTR)result;
      const auto last = std::get<sizeof...(Arguments) - 1>(all);
      if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(last)>>) handle = (INT_PTR)*last;
      session->open[handle] = function.opens;
    }
    return support::Fail(error, result);
  }

  static inline Function function{reinterpret_cast<void*>(&Replacement)};
};

using Functions = std::map<std::string, Function*>;

/// The functions that have a row, which fills them in.
template <auto... Imported>
Functions Watch(std::wstring_view names) {
  std::map<std::wstring, Function*> hooks;
  std::size_t next = 0;
  const std::vector<std::wstring> split = support::Split(names, L',');
  ((hooks[std::wstring(text::Trim(split[next++]))] = &Hook<Imported>::function), ...);
  Functions functions;
  for (const auto& row : support::Rows("integration/sweep_functions.txt")) {
    for (const std::wstring& name : support::Split(row[0], L' ')) {
      Function& function = *(functions[support::Utf8(name)] = hooks.at(name));
      function = {function.other, name, row[1], {}, row[3], row[4]};
      std::wistringstream codes(row[2]);
      for (DWORD code; codes >> code;) function.codes.push_back(code);
    }
  }
  return functions;
}
#define WATCH(...) Watch<__VA_ARGS__>(L"" #__VA_ARGS__)

const Functions& Watched() {
  static const Functions functions = WATCH(
      AccessCheck, AddAccessAllowedAce, AllocateAndInitializeSid, CloseHandle, CopyFileW, CreateDirectoryW,
      CreateFileW, CreateMutexW, DeleteFileW, DuplicateToken, FindClose, FindFirstFileW, FindNextFileW,
      FormatMessageW, FreeSid, GetFileAttributesW, GetFileInformationByHandle, GetFileVersionInfoSizeW,
      GetFileVersionInfoW, GetModuleFileNameW, GetPrivateProfileSectionNamesW, GetPrivateProfileStringW,
      GetTempPathW, HttpOpenRequestW, HttpQueryInfoW, HttpSendRequestW, InitializeAcl,
      InitializeSecurityDescriptor, InternetCheckConnectionW, InternetCloseHandle, InternetConnectW,
      InternetOpenW, InternetReadFile, InternetSetOptionW, LockFileEx, OpenProcessToken, OpenThreadToken,
      PathAppendW, PathFileExistsW, ReadFile, RegCloseKey, RegOpenKeyExW, RegQueryValueExW, ReleaseMutex,
      SHGetFolderPathW, SHGetSpecialFolderPathW, SetEndOfFile, SetFileAttributesW, SetFileInformationByHandle,
      SetFilePointerEx, SetSecurityDescriptorDacl, SetSecurityDescriptorGroup, SetSecurityDescriptorOwner,
      UnlockFileEx, VerQueryValueW, WaitForSingleObject, WriteFile, WritePrivateProfileStringW);
  return functions;
}
#undef WATCH

/// Puts the hooks in, or takes them out again.
void ExchangeAll() {
  static const std::map<Function*, void**> slots = [] {
    std::map<Function*, void**> found;
    for (const auto& [name, function] : Watched()) found[function] = support::FindImport(name);
    return found;
  }();
  for (const auto& [function, slot] : slots) function->other = support::ExchangeImport(slot, function->other);
}

__time64_t stopped_at;
__time64_t Now(__time64_t* /*copy*/) {
  return stopped_at;
}

}  // namespace

std::string UncoveredImports(const wchar_t* program) {
  static const std::regex fallible(
      "(?!.*SystemTimeAsFileTime)((advapi32|shlwapi|version|wininet)\\.dll .*|"
      "kernel32\\.dll .*(File|Director|Profile|Path|Mutex).*)");
  const HMODULE module = LoadLibraryExW(program, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  std::string names = module == nullptr ? "(not readable)" : "";
  for (const auto& slots : {support::AllImports(module), support::LateImports()}) {
    for (const support::ImportSlot& slot : slots) {
      if (!Watched().contains(slot.name) && std::regex_match(slot.dll + " " + slot.name, fallible))
        names += " " + slot.name;
    }
  }
  FreeLibrary(module);
  return names;
}

Run Perform(const Plan& plan, const std::function<void()>& act) {
  Session here{plan};
  ExchangeAll();
  session = &here;
  act();
  session = nullptr;
  ExchangeAll();
  for (const auto& [handle, kind] : here.open) here.run.disorder += L"left open: " + kind + L"; ";
  return std::move(here.run);
}

std::shared_ptr<void> StopClock(__time64_t now) {
  stopped_at = now;
  void** const slot = support::FindImport("_time64");
  void* const clock = support::ExchangeImport(slot, reinterpret_cast<void*>(&Now));
  return std::shared_ptr<void*>(slot, [clock](void** used) { support::ExchangeImport(used, clock); });
}

}  // namespace sweep
