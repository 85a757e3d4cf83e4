#include <windows.h>

#include <regex>

#include "log/log_texts.h"
#include "log/system_log.h"
#include "platform/sharing.h"
#include "settings/run_state.h"
#include "sweep.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/update_texts.h"

namespace sweep {
namespace {

using namespace update_texts;
using support::Machine;

constexpr wchar_t kLogText[] = L"First entry\n\nSecond entry\n\n";
constexpr char kSettings[] = "# kept\r\nCHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n[OTHER]\r\nA=1\r\n";
constexpr wchar_t kOwnLog[] = L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log";

const std::wstring kList = L"[Update Packs for Versions]\n[Varnexa15_0_2_7]\n";
const std::wstring kSeed = L"[KORSA_URL]\nTIMEOUT=20\n";
const std::wstring kWithDefault = kSeed + L"CHECKUPDATES=TRUE\n";

bool In(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != text.npos;
}

// --- A start-up check with a record that is ahead of the executable.

void WriteRecord(Machine& machine) {
  support::WriteBytes(machine.Record(), "Varnexa15_0_2_7\r\n");
}

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
    .arrange = WriteRecord,
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

void RemoveSettings(Machine& machine) {
  support::RemoveTree(machine.Documents() + L"\\Varnexa");
}

std::wstring StartUp(Machine&) {
  RunState run;
  run.WriteRunHeader();
  const wchar_t* const decision = run.PrepareServerSettings() ? L"-- +checks" : L"-- ";
  run.ResolveSettingsFile();
  return run.LogText() + decision + (run.SettingsFilePath.empty() ? L"" : L"+") + run.SettingsFilePath;
}

const Scene kStartUp{
    .name = "start-up",
    .arrange = RemoveSettings,
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
  text::ReplaceAll(left, kLogText + log.ErrorText(), L"+kept");
  return log.ErrorText() + L"-- " + left + g_strCurrentLogFile;
}

const std::wstring kOld = L"log:01Jan2020_01_00_AM.log", kNew = L"log:13Sep2020_12_00_PM.log";
const std::wstring kEntries = L"First entry\nSecond entry\n";
const Scene kAppend{
    .name = "log",
    .pairs = true,
    .arrange = [](Machine&) {},
    .act = WriteLog,
    // The text is kept, or it is whole in one file, after its old content; a new file may begin with an old
    // one's.
    .ends = {L"+kept", L"+kept|" + kNew + L"=", kOld + L"|" + kOld + L"=Old entry\n" + kEntries,
             kNew + L"|" + kNew + L"=" + kEntries, kNew + L"|" + kNew + L"=Old entry\n" + kEntries,
             kNew + L"|" + kNew + L"=" +
                 std::wstring(log_texts::kHistoryFailed.begin(), log_texts::kHistoryFailed.end()) + L"\n" +
                 kEntries}};

}  // namespace

void Prepare(Machine& machine) {
  machine.Install(support::Layout::one);
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings(kSettings);
  support::MakeFolder(machine.LogFolder());
  support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", "[KORSA_URL]\r\nTIMEOUT=20\r\n");
  support::WriteBytes(machine.LogFolder() + kOwnLog, "Old entry\r\n");
  for (const std::wstring& folder :
       {machine.Temp(), machine.ProductFolder(), machine.Documents(), machine.LogFolder()}) {
    support::WriteBytes(folder + L"\\other.log", "Not ours\r\n");
  }
}

const std::vector<Scene>& Scenes() {
  static const std::vector<Scene> scenes{kCheck, kStartUp, kAppend};
  return scenes;
}

}  // namespace sweep
