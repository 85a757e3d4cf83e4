#include <winsock2.h>

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>
#include <tlhelp32.h>
#include <wininet.h>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "sweep.h"

namespace sweep {
namespace {

/// What a handle is closed with.
enum class Kind { none, object, find, key, sid, internet };
/// How a function tells that it failed: a null result, -1, the code itself, or the code as an HRESULT. The
/// last error is set in every case.
enum class Answer { zero, minus_one, code, hresult };
using Codes = std::vector<DWORD>;

struct Function {
  const char* name;
  void* hook;
  void** original;
  const Function** self;
  Answer answer;
  Codes codes;  ///< to fail with; none: only watched
  Kind opens, closes;
};

struct Session {
  const Plan& plan;
  Run run;
  DWORD thread;
  std::map<void*, const Function*> open;
};
Session* session = nullptr;

bool Watching() {
  return session != nullptr && session->thread == GetCurrentThreadId();
}

/// Counts a call and answers the code that it is to fail with.
DWORD Enter(const Function& function, const wchar_t* subject) {
  if (!Watching() || function.codes.empty()) return 0;
  auto& [plan, run, thread, open] = *session;
  const auto same = [&](const Call& call) {
    return call.function == function.name && call.subject == subject;
  };
  const auto nth = static_cast<int>(std::count_if(run.calls.begin(), run.calls.end(), same)) + 1;
  DWORD code = 0;
  for (const Fault& fault : plan.faults) {
    const bool follows = plan.from_then_on && fault.call < run.calls.size();
    if (fault.call == run.calls.size()) code = fault.code;
    if (follows && run.calls[fault.call].function == function.name) code = fault.code;
  }
  run.calls.push_back({function.name, subject, nth, function.codes, code});
  return code;
}

void Closed(const Function& function, void* handle) {
  if (!Watching() || function.closes == Kind::none) return;
  const auto found = session->open.find(handle);
  const bool right = found != session->open.end() && found->second->opens == function.closes;
  if (!right) session->run.disorder += std::string(function.name) + " closed what was not its to close; ";
  session->open.erase(handle);
}

template <auto Imported, class Type = decltype(Imported)>
struct Hook;

template <auto Imported, class Result, class... Arguments>
struct Hook<Imported, Result(WINAPI*)(Arguments...)> {
  static inline void* original = nullptr;
  static inline const Function* function = nullptr;

  static Result WINAPI Replacement(Arguments... arguments) {
    const std::tuple all(arguments...);
    const wchar_t* subject = nullptr;
    const auto look = [&](auto argument) {
      if constexpr (std::is_convertible_v<decltype(argument), const wchar_t*>)
        subject = subject ? subject : argument;
    };
    (look(arguments), ...);
    if (const DWORD code = Enter(*function, subject == nullptr ? L"" : subject)) {
      SetLastError(code);
      return Failure(code);
    }
    Closed(*function, (void*)(INT_PTR)std::get<0>(all));
    const Result result = reinterpret_cast<Result(WINAPI*)(Arguments...)>(original)(arguments...);
    const DWORD error = GetLastError();
    const bool done = function->answer == Answer::code ? result == Result{} : result != Failure(0);
    if (Watching() && done && function->opens != Kind::none) {
      // The handle is the result, or what the last argument points to.
      const auto last = std::get<sizeof...(Arguments) - 1>(all);
      if constexpr (std::is_pointer_v<Result>) {
        session->open[result] = function;
      } else if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(last)>>) {
        session->open[*last] = function;
      }
    }
    SetLastError(error);
    return result;
  }

 private:
  static Result Failure(DWORD code) {
    const INT_PTR codes[] = {0, -1, static_cast<INT_PTR>(code), HRESULT_FROM_WIN32(code)};
    return (Result)codes[static_cast<int>(function->answer)];
  }
};

template <auto Imported>
Function Make(const char* name, Answer answer, Codes codes, Kind opens = Kind::none,
              Kind closes = Kind::none) {
  using Entry = Hook<Imported>;
  void* const hook = reinterpret_cast<void*>(&Entry::Replacement);
  return {name, hook, &Entry::original, &Entry::function, answer, std::move(codes), opens, closes};
}
#define F(name, ...) Make<name>(#name, __VA_ARGS__)

using enum Answer;
using enum Kind;
const Codes kFile{2, 3, 5, 32, 112}, kRegistry{2, 5, 234}, kNet{12002, 12007, 12029, 12152}, kWatched{};

const Function kTable[] = {
    // Registry and private profiles.
    F(RegOpenKeyExW, code, kRegistry, key),
    F(RegQueryValueExW, code, kRegistry),
    F(RegCloseKey, code, kWatched, none, key),
    F(GetPrivateProfileStringW, zero, {2, 5}),
    F(WritePrivateProfileStringW, zero, {5, 32, 112}),
    F(GetPrivateProfileSectionNamesW, zero, {2, 5}),
    // Shell folders, paths, attributes.
    F(SHGetFolderPathW, hresult, {2, 5}),
    F(SHGetSpecialFolderPathW, zero, {2, 5}),
    F(PathAppendW, zero, {206}),
    F(PathFileExistsW, zero, {2, 5}),
    F(GetFileAttributesW, minus_one, {2, 5}),
    F(GetTempPathW, zero, {5}),
    F(GetModuleFileNameW, zero, {8}),
    // Files.
    F(CreateFileW, minus_one, kFile, object),
    F(ReadFile, zero, {5, 32}),
    F(WriteFile, zero, {5, 112}),
    F(SetFilePointerEx, zero, {87}),
    F(SetEndOfFile, zero, {5}),
    F(LockFileEx, zero, {33}),
    F(UnlockFileEx, zero, {158}),
    F(CreateDirectoryW, zero, {3, 5, 112}),
    F(CopyFileW, zero, kFile),
    F(MoveFileExW, zero, {5, 32, 112}),
    F(SetFileAttributesW, zero, {5}),
    F(DeleteFileW, zero, {2, 5, 32}),
    F(FindFirstFileW, minus_one, {2, 3, 5}, find),
    F(FindNextFileW, zero, {5, 18}),
    F(FindClose, zero, kWatched, none, find),
    F(CloseHandle, zero, kWatched, none, object),
    // Version resources, messages.
    F(GetFileVersionInfoSizeW, zero, {2, 1813}),
    F(GetFileVersionInfoW, zero, {5, 8}),
    F(VerQueryValueW, zero, {87}),
    F(FormatMessageW, zero, {317}),
    // WinInet.
    F(InternetCheckConnectionW, zero, kNet),
    F(InternetOpenW, zero, kNet, internet),
    F(InternetSetOptionW, zero, {12009, 12018}),
    F(InternetConnectW, zero, kNet, internet),
    F(HttpOpenRequestW, zero, kNet, internet),
    F(HttpSendRequestW, zero, kNet),
    F(HttpQueryInfoW, zero, {122, 12150, 12152}),
    F(InternetReadFile, zero, {12002, 12030, 12152}),
    F(InternetCloseHandle, zero, kWatched, none, internet),
    // Turns.
    F(CreateMutexW, zero, {5, 6}, object),
    F(WaitForSingleObject, code, {WAIT_TIMEOUT, WAIT_FAILED}),
    F(ReleaseMutex, zero, {288}),
    // Token and security.
    F(OpenThreadToken, zero, {5}, object),
    F(OpenProcessToken, zero, {5}, object),
    F(DuplicateToken, zero, {5}, object),
    F(AllocateAndInitializeSid, zero, {8}, sid),
    F(FreeSid, zero, kWatched, none, sid),
    F(InitializeAcl, zero, {8}),
    F(AddAccessAllowedAce, zero, {1344}),
    F(InitializeSecurityDescriptor, zero, {87}),
    F(SetSecurityDescriptorDacl, zero, {87}),
    F(SetSecurityDescriptorGroup, zero, {87}),
    F(SetSecurityDescriptorOwner, zero, {87}),
    F(AccessCheck, zero, {5}),
    // Snapshot and processes.
    F(CreateToolhelp32Snapshot, minus_one, {5, 8}, object),
    F(Process32FirstW, zero, {18}),
    F(Process32NextW, zero, {18}),
    F(OpenProcess, zero, {5, 87}, object),
    F(TerminateProcess, zero, {5}),
};
#undef F

}  // namespace

std::string UncoveredImports(const wchar_t* program) {
  const auto has = [](const std::string& name, std::initializer_list<const char*> parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&](const char* part) { return name.find(part) + 1 != 0; });
  };
  const HMODULE module = LoadLibraryExW(program, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  std::string names = module == nullptr ? "(not readable)" : "";
  for (const support::ImportSlot& slot : support::AllImports(module)) {
    const auto covers = [&](const Function& function) { return slot.name == function.name; };
    if (std::any_of(std::begin(kTable), std::end(kTable), covers)) continue;
    const bool whole = has(slot.dll, {"advapi32", "shlwapi", "version", "wininet"});
    const bool part =
        slot.dll == "kernel32.dll" && has(slot.name, {"File", "Director", "Profile", "Path", "Mutex"});
    const bool harmless = has(slot.name, {"SystemTimeAsFileTime", "DefaultDllDirectories"});
    if ((whole || part) && !harmless) names += " " + slot.name;
  }
  FreeLibrary(module);
  return names;
}

Run Perform(const Plan& plan, const std::function<void()>& act) {
  Session here{plan, {}, GetCurrentThreadId(), {}};
  std::vector<void**> slots;
  for (const support::ImportSlot& slot : support::AllImports()) {
    for (const Function& function : kTable) {
      if (slot.name != function.name) continue;
      *function.self = &function;
      *function.original = support::ExchangeImport(slot.address, function.hook);
      slots.push_back(slot.address);
      slots.push_back(function.original);
    }
  }
  session = &here;
  act();
  session = nullptr;
  for (std::size_t i = 0; i < slots.size(); i += 2) support::ExchangeImport(slots[i], *slots[i + 1]);
  for (const auto& open : here.open) {
    here.run.disorder += std::string("a handle of ") + open.second->name + " was left open; ";
  }
  return std::move(here.run);
}

}  // namespace sweep
