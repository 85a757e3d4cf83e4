#include <doctest.h>

#include <windows.h>

#include <sddl.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <tuple>
#include <type_traits>

#include "log/log_texts.h"
#include "log/system_log.h"
#include "platform/sharing.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "support/table.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/update_texts.h"

namespace {

using namespace update_texts;
using namespace support;

// --- Failing imported functions of this program one call at a time, and counting the handles they open and
// close.

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
    void** const slot = FindImport(Utf8(name));
    function = {function.other, slot, std::wstring(name), failed, codes, handle};
    watched[Utf8(name)] = &function;
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
    function->other = ExchangeImport(function->slot, function->other);
}

// --- The scenes.

using Files = std::map<std::wstring, std::string>;  ///< path, content

/// A part of a run that the sweep repeats with failing calls.
struct Scene {
  std::string name;
  bool pairs = false;                           ///< two calls fail as well
  void (*arrange)(Machine&) = [](Machine&) {};  ///< on top of what every scene finds
  std::wstring (*act)(Machine&);                ///< returns its log, "-- " and the results
  /// What does not hold after a run, whatever failed; gets the log, "-- ", results and changed files.
  std::wstring (*broken)(const std::wstring& report) = nullptr;
  /// The permitted results, each followed by the changed files with their content; each occurs. "log:" stands
  /// for the log folder and the beginning of its files' names.
  std::set<std::wstring> ends;
};

constexpr char kSettings[] = "# kept\r\nCHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n[OTHER]\r\nA=1\r\n";

const std::wstring kList = L"[Update Packs for Versions]\n[Varnexa15_0_2_7]\n";
const std::wstring kSeed = L"[KORSA_URL]\nTIMEOUT=20\n";
const std::wstring kWithDefault = kSeed + L"CHECKUPDATES=TRUE\n";

bool In(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != text.npos;
}

// --- A start-up check with a record that is ahead of the executable.

std::wstring PatchCheck(Machine& machine) {
  g_nUpdateCheckCount = 0;
  platform::g_nWaitLeftMs = 0;
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  const wchar_t* warned = L"";
  run.WarnUser = [&](auto) { warned = L"+warned"; };
  const CCheckPatch check(run);
  const std::wstring &log = run.LogText(), &error = check.m_strErrorText;
  // The last error entry is the error text.
  const bool told = log.rfind(L"\n\n Error : ") == log.rfind(L"\n\n" + error + L"\n\n");
  return log + L"-- " + (check.m_bUpdatesAvailable ? L"+updates" : L"") +
         (check.m_bCheckFailed ? L"+failed" : L"") +
         (check.m_bCheckFailed == error.empty() || (check.m_bCheckFailed && !told) ? L"+wrong error text"
                                                                                   : L"") +
         (check.m_bNetworkError ? L"+network" : L"") + warned;
}

std::wstring BrokenCheck(const std::wstring& report) {
  std::wstring broken;
  const auto require = [&broken](bool holds, const wchar_t* what) {
    if (!holds) broken.append(what).append(L"; ");
  };
  for (const std::wstring_view line : {kEntriesStart, kEntriesEnd, kUpdatesStart, kUpdatesEnd})
    require(In(report, std::wstring(line) + L"\n\n"), L"four lines frame the parts of the check");
  require(In(report, std::wstring(kUpdatesEnd) + L"\n\n-- "), L"the last line is the check's end");
  // A result is there if and only if the log has its entry.
  const auto together = [&](bool logged, const wchar_t* result) {
    require(logged == In(report, result), result);
  };
  const bool network = std::regex_search(report, std::wregex(L"\n Error : (122|12002|12007|12029|12150)\\b"));
  together(In(report, L"\n Error : "), L"+failed");
  together(network, L"+network");
  together(In(report, L"Update details found."), L"+updates");
  together(In(report, kRecordDeleted), L"installedupdates.dat=missing");
  // Without the facts the user is warned, and no server is asked.
  together(In(report, std::wstring(kUpdatesStart) + L"\n\n="), L"+warned");
  return broken;
}

const Scene kCheck{
    .name = "check",
    .arrange = [](Machine& machine) { WriteBytes(machine.Record(), "Varnexa15_0_2_7\r\n"); },
    .act = PatchCheck,
    .broken = BrokenCheck,
    // The list is whole, empty or as before; without the mutex it has another name for a while.
    .ends = {L"+updates|installedupdates.dat=missing", L"+warned", L"+failed", L"+failed+network",
             L"+failed|updates.ini=", L"+failed+network|updates.ini=", L"+failed|updates.ini=" + kList,
             L"+failed+network|updates.ini=" + kList, L"|updates.ini=" + kList,
             L"+updates|updates.ini=" + kList, L"+updates|installedupdates.dat=missing|updates.ini=" + kList,
             // A value that cannot be read gets its default.
             L"+updates|korsa.ini=[KORSA_URL]\n# kept\nCHECKUPDATES=FALSE\nIGNORE_PATCH_ERROR=FALSE\n"
             L"[OTHER]\nA=1\n|installedupdates.dat=missing|updates.ini=" +
                 kList}};

// --- A first start, with a settings file beside the program.

std::wstring StartUp(Machine&) {
  RunState run;
  run.WriteRunHeader();
  const wchar_t* const decision = run.PrepareServerSettings() ? L"-- +checks" : L"-- ";
  run.ResolveSettingsFile();
  return run.LogText() + decision + (run.SettingsFilePath.empty() ? L"" : L"+") + run.SettingsFilePath;
}

const Scene kStartUp{
    .name = "start-up",
    .arrange = [](Machine& machine) { RemoveTree(machine.documents + L"\\Varnexa"); },
    .act = StartUp,
    // Always decides to check. The settings are the whole file, with or without the default, or not there.
    .ends = {L"+checks", L"+checks|korsa.ini=" + kWithDefault, L"+checks+korsa.ini",
             L"+checks+korsa.ini|korsa.ini=" + kSeed, L"+checks+korsa.ini|korsa.ini=" + kWithDefault,
             // The copy that is edited stays where it cannot be deleted.
             L"+checks+korsa.ini|korsa.ini=" + kWithDefault + L"|kor.tmp=" + kWithDefault}};

// --- An append to the dated log, whose newest file is old.

std::wstring WriteLog(Machine&) {
  g_strCurrentLogFile.clear();
  SystemLog log;
  log.AppendEntry(L"First entry\n\nSecond entry");
  log.OpenSystemLog();
  std::wstring left = log.PendingText();
  text::ReplaceAll(left, L"First entry\n\nSecond entry\n\n" + log.ErrorText(), L"+kept");
  return log.ErrorText() + L"-- " + left + g_strCurrentLogFile;
}

const std::wstring kOld = L"log:01Jan2020_01_00_AM.log", kNew = L"log:13Sep2020_12_00_PM.log";
const std::wstring kEntries = L"First entry\nSecond entry\n";
const Scene kAppend{
    .name = "log",
    .pairs = true,
    .act = WriteLog,
    // The text is kept, or it is whole in one file, after its old content; a new file may begin with an old
    // one's.
    .ends = {L"+kept", L"+kept|" + kNew + L"=", kOld + L"|" + kOld + L"=Old entry\n" + kEntries,
             kNew + L"|" + kNew + L"=" + kEntries, kNew + L"|" + kNew + L"=Old entry\n" + kEntries,
             kNew + L"|" + kNew + L"=" +
                 std::wstring(log_texts::kHistoryFailed.begin(), log_texts::kHistoryFailed.end()) + L"\n" +
                 kEntries}};

/// Prepares what every scene finds: settings, a registered product with its executable, logs, an old list,
/// other files.
void Prepare(Machine& machine) {
  machine.Install(Layout::one);
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings(kSettings);
  MakeFolder(machine.LogFolder());
  WriteBytes(machine.Seed(), "[KORSA_URL]\r\nTIMEOUT=20\r\n");
  WriteBytes(machine.LogFolder() + L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log", "Old entry\r\n");
  WriteBytes(machine.UpdateList(), "[Varnexa15_0_9_9]\r\n");
  for (const std::wstring& folder :
       {machine.Temp(), machine.ProductFolder(), machine.documents, machine.LogFolder()}) {
    WriteBytes(folder + L"\\other.log", "Not ours\r\n");
  }
}

/// TAVREL_SWEEP_REPLAY selects one run, and those that its number begins with.
bool Wanted(const std::string& number) {
  const char* const replay = std::getenv("TAVREL_SWEEP_REPLAY");
  return replay == nullptr || std::string_view(replay).starts_with(number);
}

/// Runs one scene on its own machine again and again, with another plan each time.
class SceneRunner {
 public:
  explicit SceneRunner(const Scene& scene) : scene_(scene) {
    Prepare(machine_);
    scene.arrange(machine_);
    before_ = Snapshot();
  }

  /// Each call with each of its codes, once and for the rest of the run; in pairs with each later call of the
  /// run in which it failed, both with their first codes.
  void Sweep() {
    RunScene({});  // creates what later runs find
    const std::vector<Call> calls = RunScene({}).calls;
    CHECK(Utf8(Broken()) == "");
    for (std::size_t first = 0; first < calls.size(); ++first) {
      const Call& call = calls[first];
      for (const DWORD code : call.codes) {
        const Run run = Try({{{first, code}}});
        Try({{{first, code}}, true});
        if (!scene_.pairs || code != call.codes[0]) continue;
        for (std::size_t second = first + 1; second < run.calls.size(); ++second) {
          Try({{{first, code}, {second, run.calls[second].codes[0]}}});
        }
      }
    }
    if (std::getenv("TAVREL_SWEEP_REPLAY") != nullptr) return;
    for (const std::wstring& end : scene_.ends) CHECK_MESSAGE(seen_.contains(end), Utf8(end));
  }

 private:
  Run Try(const Plan& plan) {
    std::string number = scene_.name + ":";
    for (const auto& [call, code] : plan.faults) {
      number += std::to_string(call) + "," + std::to_string(code) + ",";
    }
    number += plan.from_then_on ? "on" : "";
    if (!Wanted(number)) return {};
    INFO("replay alone: TAVREL_SWEEP_REPLAY=", number);
    Run run = RunScene(plan);
    std::wstring failed;
    for (const Call& call : run.calls) {
      if (call.code != 0) failed += call.function + L"; ";
    }
    INFO("failed: ", Utf8(failed + L"\nreport: " + report_));
    CHECK(Utf8(run.disorder + Broken()) == "");
    return run;
  }

  /// Runs the scene with `plan` in force, reports its entries and the files that it changed, and restores
  /// these. Only calls of this thread count.
  Run RunScene(const Plan& plan) {
    Session here{plan};
    ExchangeAll();
    session = &here;
    report_ = L"\n\n" + scene_.act(machine_);
    session = nullptr;
    ExchangeAll();
    for (const auto& [handle, kind] : here.open) here.run.disorder += L"left open: " + kind + L"; ";
    Files after = Snapshot();
    for (const auto& [path, bytes] : before_) after.try_emplace(path, "missing");
    for (const auto& [path, bytes] : after) {
      const auto was = before_.find(path);
      if (was != before_.end() && was->second == bytes) continue;
      report_ += L"|" + path + L"=" + std::wstring(bytes.begin(), bytes.end());
      DeleteFileW(path.c_str());
      if (was != before_.end()) WriteBytes(path, was->second);
    }
    text::ReplaceAll(report_, L"\r\n", L"\n");
    text::ReplaceAll(report_, machine_.SettingsFile(), L"korsa.ini");
    text::ReplaceAll(report_, machine_.LogFolder() + L"\\QRT_15_SystemTavrel_", L"log:");
    for (const std::wstring& folder : {machine_.Temp(), machine_.ProductFolder()})
      text::ReplaceAll(report_, folder + L"\\", L"");
    report_ = std::regex_replace(report_, std::wregex(L"kor[0-9a-f]+\\.tmp"), L"kor.tmp");
    scene_.arrange(machine_);
    return here.run;
  }

  Files Snapshot() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(machine_.root)) {
      const std::wstring path = entry.path().wstring();
      if (!entry.is_directory()) files[path] = ReadBytes(path).value_or("unreadable");
    }
    return files;
  }

  /// What does not hold after a run of the scene, whatever failed.
  std::wstring Broken() {
    const std::wstring end = report_.substr(report_.rfind(L"-- ") + 3);
    seen_.insert(end);
    return (scene_.broken == nullptr ? L"" : scene_.broken(report_)) +
           (scene_.ends.contains(end) ? L"" : L"this end is not permitted; ");
  }

  const Scene& scene_;
  Machine machine_;
  std::wstring report_;
  std::set<std::wstring> seen_;  ///< ends that occurred
  Files before_;
};

/// doctest says in which run: it reports no crash itself when MinGW has built it.
LONG WINAPI ReportCrash(EXCEPTION_POINTERS*) {
  MESSAGE("crashed");
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

TEST_CASE("sweep: after each failing call handles, files, flags and log are in order") {
  const HttpServer server(Reply(200, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n"));
  SetUnhandledExceptionFilter(ReportCrash);
  const ImportHook<GetLocalTime> noon("GetLocalTime", [](SYSTEMTIME* time) {
    *time = {2020, 9, 0, 13, 12, 0, 0, 0};  // Sunday, 13 September
  });
  for (const Scene* const scene : {&kCheck, &kStartUp, &kAppend}) {
    if (Wanted(scene->name + ":")) SceneRunner(*scene).Sweep();
  }
}

// Those of files, the registry, the network and security, imported or looked up by name.
TEST_CASE("sweep: the table of functions covers every call of the program that can fail") {
  const std::regex fallible(
      "(?!.*SystemTimeAsFileTime)((advapi32|shlwapi)\\.dll .*| (Http|Internet|GetFile|Ver).*|"
      "kernel32\\.dll .*(File|Director|Profile|Path|Mutex).*)",
      std::regex::icase);
  const HMODULE program = LoadLibraryExW(TAVREL_PROGRAM, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  REQUIRE(program != nullptr);
  for (const auto& slots : {AllImports(program), LateImports()}) {
    for (const ImportSlot& slot : slots) {
      if (std::regex_match(slot.dll + " " + slot.name, fallible))
        CHECK_MESSAGE(Watched().contains(slot.name), slot.name);
    }
  }
  FreeLibrary(program);
}
