#include <winsock2.h>
#include <windows.h>

#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <tlhelp32.h>
#include <wininet.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "sweep.h"
#include "support/import_hook.h"

namespace sweep {
namespace {

struct Session {
  const Plan& plan;
  Run run;
  DWORD thread = GetCurrentThreadId();
  std::map<void*, std::pair<Kind, const Function*>> open;
};
Session* session = nullptr;

bool Watching() { return session != nullptr && session->thread == GetCurrentThreadId(); }

/// Counts a call and answers the code that it is to fail with.
DWORD Enter(const Function& function, const wchar_t* subject) {
  if (!Watching() || function.codes.empty()) return 0;
  const std::wstring text = subject == nullptr ? L"" : subject;
  std::vector<Call>& calls = session->run.calls;
  const auto same = [&](const Call& call) { return call.function == &function && call.subject == text; };
  const auto nth = static_cast<int>(std::count_if(calls.begin(), calls.end(), same)) + 1;
  DWORD code = 0;
  for (const Fault& fault : session->plan.faults) {
    if (fault.call == calls.size()) code = fault.code;
  }
  const std::vector<Fault>& faults = session->plan.faults;
  if (session->plan.from_then_on && faults[0].call < calls.size() &&
      calls[faults[0].call].function == &function) {
    code = faults[0].code;
  }
  calls.push_back({&function, text, nth, code});
  return code;
}

void Opened(const Function& function, void* handle) {
  if (Watching() && handle != nullptr) session->open[handle] = {function.opens, &function};
}

void Closed(const Function& function, void* handle) {
  if (!Watching()) return;
  const auto found = session->open.find(handle);
  if (found == session->open.end() || found->second.first != function.closes) {
    session->run.disorder.push_back(std::string(function.name) + " closed what was not its to close");
  }
  if (found != session->open.end()) session->open.erase(found);
}

const wchar_t* Subject() { return nullptr; }
template <class First, class... Rest>
const wchar_t* Subject(First first, Rest... rest) {
  if constexpr (std::is_convertible_v<First, const wchar_t*>) {
    if (first != nullptr) return first;
  }
  return Subject(rest...);
}

template <auto Imported, class Type = decltype(Imported)>
struct Hook;

template <auto Imported, class Result, class... Arguments>
struct Hook<Imported, Result(WINAPI*)(Arguments...)> {
  static inline void* original = nullptr;
  static inline const Function* function = nullptr;

  static Result WINAPI Replacement(Arguments... arguments) {
    if (const DWORD code = Enter(*function, Subject(arguments...))) return Failed(code);
    if (function->closes != Kind::none) Closed(*function, First(arguments...));
    if (function->never_called && Watching()) return (Result)(INT_PTR)1;
    const Result result = reinterpret_cast<Result(WINAPI*)(Arguments...)>(original)(arguments...);
    const DWORD error = GetLastError();
    if (function->opens != Kind::none && Succeeded(result)) Opened(*function, Handle(result, arguments...));
    SetLastError(error);
    return result;
  }

 private:
  static Result Value(Answer answer, DWORD code) {
    switch (answer) {
      case Answer::zero: return Result{};
      case Answer::minus_one: return (Result)(INT_PTR)-1;
      case Answer::code: return (Result)(INT_PTR)code;
      default: return (Result)(INT_PTR)HRESULT_FROM_WIN32(code);
    }
  }
  static Result Failed(DWORD code) {
    SetLastError(code);
    return Value(function->answer, code);
  }
  static bool Succeeded(Result result) {
    if (function->answer == Answer::code) return result == Result{};
    return result != Value(function->answer, 0);
  }
  template <class First_, class... Rest>
  static void* First(First_ first, Rest...) {
    return (void*)(INT_PTR)first;
  }
  /// The handle opened: the result, or what the last argument points to.
  static void* Handle(Result result, Arguments... arguments) {
    if constexpr (std::is_pointer_v<Result>) {
      return result;
    } else {
      const auto last = std::get<sizeof...(Arguments) - 1>(std::tuple(arguments...));
      if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(last)>>) return *last;
      return nullptr;
    }
  }
};

template <auto Imported>
Function Make(const char* name, Answer answer, std::vector<DWORD> codes, Kind opens = Kind::none,
              Kind closes = Kind::none, bool never_called = false) {
  using Entry = Hook<Imported>;
  return {name,   reinterpret_cast<void*>(&Entry::Replacement), &Entry::original, &Entry::function, answer,
          std::move(codes), opens, closes, never_called};
}
#define F(name, ...) Make<name>(#name, __VA_ARGS__)

using enum Answer;
const std::vector<DWORD> kFile{2, 3, 5, 32, 112}, kRegistry{2, 5, 234}, kNet{12002, 12007, 12029, 12152},
    kDenied{5}, kMemory{8}, kWatched{};

const Function kTable[] = {
    // Registry and private profiles.
    F(RegOpenKeyExW, code, kRegistry, Kind::key),
    F(RegQueryValueExW, code, kRegistry),
    F(RegCloseKey, code, kWatched, Kind::none, Kind::key),
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
    F(GetModuleFileNameW, zero, kMemory),
    // Files.
    F(CreateFileW, minus_one, kFile, Kind::object),
    F(ReadFile, zero, {5, 32}),
    F(WriteFile, zero, {5, 112}),
    F(SetFilePointerEx, zero, {87}),
    F(SetEndOfFile, zero, {5}),
    F(LockFileEx, zero, {33}),
    F(UnlockFileEx, zero, {158}),
    F(CreateDirectoryW, zero, {3, 5, 112}),
    F(CopyFileW, zero, kFile),
    F(DeleteFileW, zero, {2, 5, 32}),
    F(MoveFileExW, zero, kFile),
    F(FindFirstFileW, minus_one, {2, 3, 5}, Kind::find),
    F(FindNextFileW, zero, {5, 18}),
    F(FindClose, zero, kWatched, Kind::none, Kind::find),
    F(CloseHandle, zero, kWatched, Kind::none, Kind::object),
    // Version resources, messages.
    F(GetFileVersionInfoSizeW, zero, {2, 1813}),
    F(GetFileVersionInfoW, zero, {5, 8}),
    F(VerQueryValueW, zero, {87}),
    F(FormatMessageW, zero, {317}),
    // WinInet.
    F(InternetCheckConnectionW, zero, kNet),
    F(InternetOpenW, zero, kNet, Kind::internet),
    F(InternetSetOptionW, zero, {12009, 12018}),
    F(InternetConnectW, zero, kNet, Kind::internet),
    F(HttpOpenRequestW, zero, kNet, Kind::internet),
    F(HttpSendRequestW, zero, kNet),
    F(HttpQueryInfoW, zero, {122, 12150, 12152}),
    F(InternetReadFile, zero, {12002, 12030, 12152}),
    F(InternetCloseHandle, zero, kWatched, Kind::none, Kind::internet),
    // Turns.
    F(CreateMutexW, zero, {5, 6}, Kind::object),
    F(WaitForSingleObject, code, {WAIT_TIMEOUT, WAIT_FAILED}),
    F(ReleaseMutex, zero, {288}),
    // Token and security.
    F(OpenThreadToken, zero, kDenied, Kind::object),
    F(OpenProcessToken, zero, kDenied, Kind::object),
    F(DuplicateToken, zero, kDenied, Kind::object),
    F(AllocateAndInitializeSid, zero, kMemory, Kind::sid),
    F(FreeSid, zero, kWatched, Kind::none, Kind::sid),
    F(InitializeAcl, zero, kMemory),
    F(AddAccessAllowedAce, zero, {1344}),
    F(InitializeSecurityDescriptor, zero, {87}),
    F(SetSecurityDescriptorDacl, zero, {87}),
    F(SetSecurityDescriptorGroup, zero, {87}),
    F(SetSecurityDescriptorOwner, zero, {87}),
    F(AccessCheck, zero, kDenied),
    // Snapshot and processes.
    F(CreateToolhelp32Snapshot, minus_one, {5, 8}, Kind::object),
    F(Process32FirstW, zero, {18}),
    F(Process32NextW, zero, {18}),
    F(OpenProcess, zero, {5, 87}, Kind::object),
    F(TerminateProcess, zero, kDenied, Kind::none, Kind::none, true),
};
#undef F

/// Imports that cannot fail with the arguments they are given, whose result nobody reads, or without which the
/// program does not start.
constexpr std::string_view kJudged =
    " GetLastError SetLastError GetCurrentProcess GetCurrentThread GetLengthSid Sleep WideCharToMultiByte"
    " MultiByteToWideChar lstrcmpiW ShellExecuteW GetModuleHandleW LoadLibraryW SetDefaultDllDirectories"
    " GetCommandLineW CommandLineToArgvW LocalFree ";
/// What the compiler's runtime brings along.
constexpr std::string_view kRuntime =
    " AddVectoredExceptionHandler CreateEventA CreateSemaphoreA DeleteCriticalSection DuplicateHandle"
    " EnterCriticalSection FreeLibrary GetCurrentProcessId GetCurrentThreadId GetHandleInformation GetModuleHandleA"
    " GetProcAddress GetProcessAffinityMask GetStartupInfoW GetSystemTimeAsFileTime GetThreadContext"
    " GetThreadPriority GetTickCount64 InitializeCriticalSection IsDBCSLeadByteEx IsDebuggerPresent"
    " LeaveCriticalSection LoadLibraryA OutputDebugStringA RaiseException ReleaseSemaphore"
    " RemoveVectoredExceptionHandler ResetEvent ResumeThread SetEvent SetProcessAffinityMask SetThreadContext"
    " SetThreadPriority SetUnhandledExceptionFilter SuspendThread TlsAlloc TlsGetValue TlsSetValue"
    " TryEnterCriticalSection VirtualProtect VirtualQuery WaitForMultipleObjects ";

/// Puts the hooks into the import table for as long as it lives.
class Hooks {
 public:
  Hooks() {
    for (const support::ImportSlot& slot : support::AllImports()) {
      for (const Function& function : kTable) {
        if (slot.name != function.name) continue;
        *function.self = &function;
        *function.original = support::ExchangeImport(slot.address, function.hook);
        slots_.push_back({slot.address, *function.original});
      }
    }
  }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;
  ~Hooks() {
    for (const auto& [slot, original] : slots_) support::ExchangeImport(slot, original);
  }

 private:
  std::vector<std::pair<void**, void*>> slots_;
};

}  // namespace

std::vector<std::string> UnjudgedImports(const wchar_t* program) {
  constexpr std::string_view kCovered =
      " advapi32.dll kernel32.dll shell32.dll shlwapi.dll version.dll wininet.dll ";
  const auto listed = [](std::string_view list, const std::string& name) {
    return list.find(" " + name + " ") != std::string_view::npos;
  };
  const HMODULE module = LoadLibraryExW(program, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  if (module == nullptr) return {"(the program cannot be read)"};
  std::vector<std::string> names;
  for (const support::ImportSlot& slot : support::AllImports(module)) {
    const bool swept = std::any_of(std::begin(kTable), std::end(kTable),
                                   [&](const Function& function) { return slot.name == function.name; });
    if (listed(kCovered, slot.dll) && !swept && !listed(kJudged, slot.name) && !listed(kRuntime, slot.name)) {
      names.push_back(slot.name);
    }
  }
  FreeLibrary(module);
  return names;
}

Run Perform(const Plan& plan, const std::function<void()>& act) {
  Session here{plan, {}, GetCurrentThreadId(), {}};
  const Hooks hooks;
  session = &here;
  act();
  session = nullptr;
  for (const auto& [handle, opened] : here.open) {
    here.run.disorder.push_back(std::string("a handle of ") + opened.second->name + " was left open");
  }
  return std::move(here.run);
}

}  // namespace sweep
