#include <doctest.h>

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>

#include "integration/sweep_functions.h"
#include "log/log_texts.h"
#include "log/system_log.h"
#include "platform/sharing.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/update_texts.h"

namespace {

using namespace sweep;
using namespace update_texts;

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
