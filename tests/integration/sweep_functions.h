#pragma once

#include <windows.h>

#include <sddl.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <climits>
#include <map>
#include <tuple>
#include <type_traits>

#include "support/machine.h"
#include "support/table.h"
#include "text/text.h"

/// Failing imported functions of this program one call at a time, and counting the handles they open and
/// close.
namespace sweep {

using namespace support;

struct Call {
  std::wstring function;
  std::vector<DWORD> codes;  ///< to fail with
  DWORD code;                ///< that it was made to fail with, or 0
};

struct Plan {
  /// The numbers of calls, from 0 in the order of the run, and their codes.
  std::map<std::size_t, DWORD> faults;
  bool from_then_on = false;  ///< a function that failed fails for the rest of the run as well
};

struct Run {
  std::vector<Call> calls;
  std::wstring disorder;  ///< handles left open, closed twice or by the wrong function
};
/// A failing call's result that is its code.
inline constexpr int kCode = INT_MAX;

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
inline thread_local Session* session = nullptr;

/// Counts a call and returns the code that it is to fail with.
inline DWORD Enter(const Function& function) {
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

inline void Close(const Function& function, INT_PTR handle) {
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
    if (const DWORD code = Enter(function)) return Fail(code, Failure(code));
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
    return Fail(error, result);
  }

  static inline Function function{reinterpret_cast<void*>(&Replacement)};
};

using Functions = std::map<std::string, Function*>;

inline std::vector<DWORD> Codes(auto... codes) {
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
    void** const slot = FindImport(Utf8(name));
    function = {function.other, slot, std::wstring(name), failed, codes, handle};
    watched[Utf8(name)] = &function;
  };
  (watch(Hook<Imported>::function), ...);
}

inline const Functions& Watched() {
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
inline void ExchangeAll() {
  for (const auto& [name, function] : Watched())
    function->other = ExchangeImport(function->slot, function->other);
}

}  // namespace sweep
