#include <windows.h>

#include <sddl.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <climits>
#include <regex>
#include <tuple>
#include <type_traits>

#include "support/machine.h"
#include "support/table.h"
#include "sweep.h"
#include "text/text.h"

namespace sweep {
namespace {

/// A failing call's result that is its code.
constexpr int kCode = INT_MAX;

/// A function that is watched, as Watch takes it.
struct Function {
  void* other;  ///< the hook or the original function, whichever is not in the import table
  void** slot{};
  std::wstring name{};
  int failed{};
  std::vector<DWORD> codes{};
  std::wstring handle{};
};

struct Session {
  const Plan& plan;
  Run run{};
  std::map<INT_PTR, std::wstring> open{};  ///< handles and their kinds
};
thread_local Session* session = nullptr;

/// Counts a call and returns the code that it is to fail with.
DWORD Enter(const Function& function) {
  if (function.codes.empty()) return 0;
  auto& [plan, run, open] = *session;
  DWORD code = 0;
  for (const Call& before : run.calls) {
    if (plan.from_then_on && before.function == function.name && before.code != 0) code = before.code;
  }
  const auto fault = plan.faults.find(run.calls.size());
  if (fault != plan.faults.end()) code = fault->second;
  run.calls.push_back({function.name, function.codes, code});
  return code;
}

void Close(const Function& function, INT_PTR handle) {
  if (!function.handle.starts_with(L'-')) return;
  if (session->open[handle] != function.handle.substr(1))
    session->run.disorder += function.name + L" closed another's; ";
  session->open.erase(handle);
}

template <auto Imported, class Type = decltype(Imported)>
struct Hook;

template <auto Imported, class Result, class... Arguments>
struct Hook<Imported, Result(WINAPI*)(Arguments...)> {
  static Result Failure(DWORD code) {
    return (Result)(INT_PTR)(function.failed == kCode ? static_cast<int>(code) : function.failed);
  }

  static Result WINAPI Replacement(Arguments... arguments) {
    const auto original = reinterpret_cast<decltype(&Replacement)>(function.other);
    if (session == nullptr) return original(arguments...);
    if (const DWORD code = Enter(function)) return support::Fail(code, Failure(code));
    const std::tuple all(arguments...);
    Close(function, (INT_PTR)std::get<0>(all));
    const Result result = original(arguments...);
    const DWORD error = GetLastError();
    const bool done = (function.failed == kCode) == (result == Failure(0));
    if (done && function.handle.starts_with(L'+')) {
      INT_PTR handle = (INT_PTR)result;
      [[maybe_unused]] const auto last = std::get<sizeof...(Arguments) - 1>(all);
      if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(last)>>) handle = (INT_PTR)*last;
      session->open[handle] = function.handle.substr(1);
    }
    return support::Fail(error, result);
  }

  static inline Function function{reinterpret_cast<void*>(&Replacement)};
};

using Functions = std::map<std::string, Function*>;

std::vector<DWORD> Codes(auto... codes) {
  return {static_cast<DWORD>(codes)...};
}

/// Fills in functions that fail alike: the result of a failing call (the last error is the code in every
/// case); the codes to fail with, none: only watched; the kind of handle, with "+" that they open, as their
/// result or into the last argument, with "-" that they close.
template <auto... Imported>
void Watch(Functions& watched, std::wstring_view names, int failed, const std::vector<DWORD>& codes,
           const wchar_t* handle) {
  const std::vector<std::wstring> split = Split(names, L',');
  auto next = split.begin();
  const auto watch = [&](Function& function) {
    const std::wstring_view name = text::Trim(*next++);
    void** const slot = support::FindImport(support::Utf8(name));
    function = {function.other, slot, std::wstring(name), failed, codes, handle};
    watched[support::Utf8(name)] = &function;
  };
  (watch(Hook<Imported>::function), ...);
}

const Functions& Watched() {
  static const Functions functions = [] {
    Functions watched;
#define WATCH(failed, codes, handle, ...) Watch<__VA_ARGS__>(watched, L"" #__VA_ARGS__, failed, codes, handle)
    // Registry, private profiles, folders, paths.
    WATCH(kCode, Codes(2, 5), L"+key", RegOpenKeyExW);
    WATCH(kCode, Codes(2, 5), L"", RegQueryValueExW);
    WATCH(kCode, Codes(), L"-key", RegCloseKey);
    WATCH(0, Codes(5, 112), L"", WritePrivateProfileStringW, WriteFile);
    WATCH(0, Codes(5), L"", GetPrivateProfileStringW, GetPrivateProfileSectionNamesW, GetTempPathW,
          SHGetSpecialFolderPathW);
    WATCH(kCode, Codes(2147942402), L"", SHGetFolderPathW);
    WATCH(0, Codes(8), L"", PathAppendW, GetModuleFileNameW);
    WATCH(0, Codes(2, 5), L"", PathFileExistsW);
    WATCH(-1, Codes(5), L"", GetFileAttributesW);
    // Files.
    WATCH(-1, Codes(2, 5, 32, 112), L"+object", CreateFileW);
    WATCH(0, Codes(5), L"", ReadFile, SetFilePointerEx, SetEndOfFile, CreateDirectoryW, FlushFileBuffers,
          GetTempFileNameW, SetFileInformationByHandle);
    WATCH(0, Codes(5, 32), L"", DeleteFileW);
    WATCH(-1, Codes(2, 5), L"+find", FindFirstFileW);
    WATCH(0, Codes(5, 18), L"", FindNextFileW);
    WATCH(0, Codes(), L"-find", FindClose);
    WATCH(0, Codes(), L"-object", CloseHandle);
    // Version resources, messages. 127, also below: the function was not found.
    WATCH(0, Codes(127), L"", GetFileVersionInfoSizeW, GetFileVersionInfoW, VerQueryValueW, FormatMessageW);
    // WinInet.
    WATCH(0, Codes(12002, 127), L"", InternetCheckConnectionW, HttpSendRequestW, InternetQueryDataAvailable,
          InternetReadFile);
    WATCH(-1, Codes(127), L"", InternetSetStatusCallbackW);
    WATCH(0, Codes(12007, 127), L"+internet", InternetOpenW);
    WATCH(0, Codes(12029, 127), L"+internet", InternetConnectW, HttpOpenRequestW);
    WATCH(0, Codes(12009), L"", InternetSetOptionW);
    WATCH(0, Codes(122, 12150, 127), L"", HttpQueryInfoW);
    WATCH(0, Codes(), L"-internet", InternetCloseHandle);
    // Mutexes.
    WATCH(0, Codes(5), L"+object", CreateMutexW);
    WATCH(kCode, Codes(258, 4294967295), L"", WaitForSingleObject);
    WATCH(0, Codes(288), L"", ReleaseMutex);
    // Token and security.
    WATCH(0, Codes(5), L"+object", OpenThreadToken, OpenProcessToken, DuplicateToken);
    WATCH(0, Codes(5), L"", ConvertStringSecurityDescriptorToSecurityDescriptorW, AccessCheck);
#undef WATCH
    return watched;
  }();
  return functions;
}

/// Puts the hooks in, or takes them out again.
void ExchangeAll() {
  for (const auto& [name, function] : Watched())
    function->other = support::ExchangeImport(function->slot, function->other);
}

}  // namespace

std::string UncoveredImports(const wchar_t* program) {
  static const std::regex fallible(
      "(?!.*SystemTimeAsFileTime)((advapi32|shlwapi)\\.dll .*| (Http|Internet|GetFile|Ver).*|"
      "kernel32\\.dll .*(File|Director|Profile|Path|Mutex).*)",
      std::regex::icase);
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

}  // namespace sweep
