#include "sweep_scenes.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "log/system_log.h"
#include "resource.h"
#include "settings/run_state.h"
#include "support/text.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"
#include "update/update_texts.h"

namespace sweep {
namespace {

using support::Machine;

constexpr char kSettings[] =
    "; kept\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\nUPDATE_LOC=updates.varnexa.example\r\n[OTHER]\r\nA=1\r\n";
constexpr char kSeed[] = "[KORSA_URL]\r\nUPDATE_LOC=updates.varnexa.example\r\nTIMEOUT=20\r\n";
constexpr char kOldLog[] = "Old entry\r\n";
constexpr wchar_t kLogText[] = L"First entry\n\nSecond entry\n\n";
constexpr char kLogLines[] = "First entry\r\nSecond entry\r\n";
const std::wstring kOwnLog = L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log";

bool Has(std::wstring_view text, std::wstring_view part) { return text.find(part) != std::wstring_view::npos; }

const std::string* Find(const Files& files, std::wstring_view end) {
  const auto found = std::find_if(files.begin(), files.end(), [&](const auto& file) { return file.first.ends_with(end); });
  return found == files.end() ? nullptr : &found->second;
}

void Nothing(Machine&) {}

void PlaceRecord(Machine& machine) { support::WriteBytes(machine.Record(), "Varnexa15_0_2_7\r\n"); }

std::wstring Flags(std::wstring_view error, bool failed, bool network, bool updates) {
  return std::wstring(error) + L"|" + (failed ? L"failed " : L"") + (network ? L"network " : L"") +
         (updates ? L"updates" : L"");
}

/// What the entries of a check say that its flags must be.
std::wstring FlagsSaid(const std::wstring& said, bool with_network) {
  const std::size_t start = said.rfind(L"\n\n Error : ");
  const bool failed = start != std::wstring::npos;
  const std::wstring error = failed ? said.substr(start + 2, said.find(L"\n\n", start + 2) - start - 2) : L"";
  const auto known = [&](std::wstring_view code) {
    return failed && std::to_wstring(text::ParseDecimal(std::wstring_view(error).substr(9))) == code;
  };
  const auto& codes = update_texts::kNetworkErrorCodes;
  return Flags(error, failed, with_network && std::any_of(codes.begin(), codes.end(), known),
               Has(said, L"Update details found."));
}

Outcome PatchCheck(Machine& machine) {
  g_nUpdateCheckCount = 0;
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  bool warned = false;
  run.WarnUser = [&](std::wstring_view) { warned = true; };
  const CCheckPatch check(run);
  std::wstring state = Flags(check.m_strErrorText, check.m_bCheckFailed, check.m_bNetworkError, check.m_bUpdatesAvailable);
  const bool mirrored = g_bCheckFailed == check.m_bCheckFailed && g_strPatchErrorText == check.m_strErrorText &&
                        g_bUpdatesAvailable == check.m_bUpdatesAvailable && check.MessageText() + L"\n\n" == run.LogText();
  const bool asked = Has(run.LogText(), L"Sever settings INI");
  g_nUpdateCheckCount = 0;
  g_bCheckFailed = g_bUpdatesAvailable = false;
  g_strPatchErrorText.clear();
  return {run.LogText(), state + (warned == asked ? L" warned wrongly" : L"") + (mirrored ? L"" : L" mirrors differ")};
}

Outcome InteractiveCheck(Machine& machine) {
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  SheetUpdateCheck sheet(run);
  sheet.RunUpdateCheck();
  return {sheet.SheetLogText(), Flags(sheet.SheetErrorText, sheet.SheetCheckFailed, false, sheet.SheetUpdatesAvailable)};
}

std::string JudgeCheck(const Outcome& outcome, const Files& before, const Files& after, bool with_network) {
  const std::wstring& said = outcome.said;
  if (outcome.state != FlagsSaid(said, with_network)) return "flags contradict the entries: " + support::Utf8(outcome.state);
  const auto ends_with = [&](std::wstring_view line) { return said.ends_with(std::wstring(line) + L"\n\n"); };
  const bool gate_closed = Has(said, update_texts::kVersionNotFound);
  if (!said.starts_with(update_texts::kEntriesStart) ||
      !ends_with(gate_closed ? update_texts::kEntriesEnd : update_texts::kUpdatesEnd)) {
    return "the rule lines do not frame the entries";
  }
  const std::string* list = Find(after, L"\\updates.ini");
  if (list != nullptr && !std::string_view(kServedList).starts_with(*list)) return "the list is not what was served";
  const std::string* record = Find(before, L"\\installedupdates.dat");
  const std::string* kept = Find(after, L"\\installedupdates.dat");
  const bool deleted = record != nullptr && kept == nullptr;
  const bool told = Has(said, update_texts::kRecordDeleted) || Has(said, update_texts::kRecordDeletedInteractive);
  if (deleted != told || (kept != nullptr && *kept != *record)) return "the record is not what the entries say";
  return {};
}

std::string JudgePatchCheck(const Outcome& outcome, const Files& before, const Files& after) {
  return JudgeCheck(outcome, before, after, true);
}

std::string JudgeInteractiveCheck(const Outcome& outcome, const Files& before, const Files& after) {
  return JudgeCheck(outcome, before, after, false);
}

void RemoveSettings(Machine& machine) { support::RemoveTree(machine.Documents() + L"\\Varnexa"); }

Outcome StartUp(Machine&) {
  RunState run;
  run.WriteRunHeader();
  const std::size_t header = run.LogText().size();
  const std::wstring rights = run.LogText().substr(run.LogText().rfind(L"App  Mode"));
  const bool check_updates = run.PrepareServerSettings();
  run.ResolveSettingsFile();
  const std::wstring entries = run.LogText().substr(header);
  std::wstring notes = run.NotesText();
  text::ReplaceAll(notes, L"\n", L"\n\n");
  return {rights + entries, (check_updates ? L"" : L"no check") + std::wstring(notes == entries ? L"" : L"notes differ") +
                                L"|" + run.SettingsFilePath};
}

std::string JudgeStartUp(const Outcome& outcome, const Files&, const Files& after) {
  if (!outcome.state.starts_with(L"|")) return support::Utf8(outcome.state);
  const std::string* file = Find(after, L"QRT15\\korsa.ini");
  return file == nullptr || file->starts_with(std::string_view(kSeed).substr(0, 40)) ? "" : "the seeded file is damaged";
}

void RemoveOwnLog(Machine& machine) { DeleteFileW((machine.LogFolder() + kOwnLog).c_str()); }

Outcome WriteLog(Machine&) {
  g_strCurrentLogFile.clear();
  SystemLog log;
  log.AppendText(kLogText);
  log.OpenSystemLog();
  std::wstring errors = log.ErrorText();
  errors.erase(0, errors.empty() ? 0 : errors.find(L"Error in "));
  const std::wstring pending = log.PendingText();
  const wchar_t* kept = pending.empty() ? L"written" : pending.starts_with(kLogText) ? L"kept" : L"lost";
  return {errors, kept + std::wstring(g_strCurrentLogFile.ends_with(kOwnLog) ? L" appended" : L"")};
}

/// The text is whole in exactly one file, behind what the file held, or it waits and no file has changed.
std::string JudgeLog(const Outcome& outcome, const Files& before, const Files& after) {
  const std::string* old = Find(before, kOwnLog);
  for (const auto& [path, bytes] : before) {
    const auto now = after.find(path);
    const bool appended = outcome.state == L"written appended" && &bytes == old;
    if (now == after.end() || now->second != bytes + (appended ? kLogLines : "")) return "a log file is damaged";
  }
  std::string fresh;
  for (const auto& [path, bytes] : after) fresh += before.contains(path) ? "" : bytes;
  const bool history = fresh == std::string(kOldLog) + kLogLines ||
                       fresh == "Error in System Tavrel Log File updates while reading old history informations.\r\n" +
                                    std::string(kLogLines);
  const bool right = outcome.state == L"written" ? fresh == kLogLines || (old != nullptr && history) : fresh.empty();
  return right && !outcome.state.starts_with(L"lost") ? "" : "the text is not in one file, whole: " + fresh;
}

/// A product that runs while it is to be closed; TerminateProcess is not carried out, so one does for all runs.
class RunningProduct {
 public:
  RunningProduct() {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    CreateProcessW(support::StandIn(L"15.0.1.0").c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                   &process_);
  }
  RunningProduct(const RunningProduct&) = delete;
  RunningProduct& operator=(const RunningProduct&) = delete;
  ~RunningProduct() {
    TerminateProcess(process_.hProcess, 0);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }

 private:
  PROCESS_INFORMATION process_{};
};

void StartProduct(Machine&) { static const RunningProduct running; }

/// Presses both options and the installer's button as soon as the page stands, then closes what is left.
struct PageUser {
  static inline int ticks = 0;
  static BOOL CALLBACK OnWindow(HWND window, LPARAM) {
    const HWND page = FindWindowExW(window, nullptr, L"#32770", nullptr);
    if (page == nullptr || GetDlgItem(page, IDC_INSTALL) == nullptr) return TRUE;
    if (++ticks == 1) {
      SendDlgItemMessageW(page, IDC_CHECK_ON_STARTUP, BM_CLICK, 0, 0);
      SendDlgItemMessageW(page, IDC_HIDE_NETWORK_ERRORS, BM_CLICK, 0, 0);
      SendMessageW(page, WM_COMMAND, IDC_INSTALL, 0);
    } else {
      SendMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
    return FALSE;
  }
  static void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD) { EnumThreadWindows(GetCurrentThreadId(), OnWindow, 0); }
};

class PageApp : public CWinApp {
 public:
  explicit PageApp(Machine& machine) : machine_(machine) {}
  Outcome outcome;

 protected:
  BOOL InitInstance() override {
    CWinApp::InitInstance();
    std::wstring said;
    const support::ImportHook<ShellExecuteW> shell(
        "ShellExecuteW", [&](HWND, LPCWSTR, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder, INT) {
          said += std::wstring(file) + L" " + parameters + (folder == machine_.ProductFolder() ? L"\n" : L" elsewhere\n");
          return static_cast<HINSTANCE>(nullptr);
        });
    const support::ImportHook<MessageBoxW> box("MessageBoxW", [&](HWND, LPCWSTR text, LPCWSTR, UINT) {
      said += std::wstring(text).append(L"\n");
      return IDYES;
    });
    RunState run;
    run.SettingsFilePath = machine_.SettingsFile();
    run.LaunchedFromPatchCheck = true;
    run.IconPath = machine_.ProductFolder() + L"\\Qrt.exe";
    CTavrelSheet sheet(run);
    PageUser::ticks = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, PageUser::OnTimer);
    const INT_PTR result = sheet.DoModal();
    KillTimer(nullptr, timer);
    outcome = {said, std::to_wstring(result)};
    return 0;
  }

 private:
  Machine& machine_;
};

Outcome OptionsAndLaunch(Machine& machine) {
  PageApp app(machine);
  app.Run(GetModuleHandleW(nullptr));
  return app.outcome;
}

std::string JudgePage(const Outcome& outcome, const Files& before, const Files& after) {
  const bool launched = outcome.said == L"cmd.exe /c \"Qrt.exe /update\"\n" && outcome.state == L"1";
  const bool refused = outcome.said.starts_with(L"The patch application file not found.") && outcome.state == L"2";
  if (!launched && !refused) return "launch: " + support::Utf8(outcome.said + outcome.state);
  // Whatever was written of the two options, the rest of the file stands.
  std::string now = *Find(after, L"QRT15\\korsa.ini");
  for (const char* key : {"CHECKUPDATES=", "IGNORE_PATCH_ERROR="}) {
    const std::size_t value = now.find(key) + std::string_view(key).size();
    now.replace(value, now.find('\r', value) - value, key[0] == 'C' ? "TRUE" : "FALSE");
  }
  return now == *Find(before, L"QRT15\\korsa.ini") ? "" : "the settings file is damaged: " + now;
}

}  // namespace

void Furnish(Machine& machine) {
  machine.Install(support::Layout::one, machine.DefaultProduct());
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings(kSettings);
  support::MakeFolder(machine.LogFolder());
  const std::pair<std::wstring, const char*> files[] = {
      {machine.ProgramFolder() + L"\\korsa.ini", kSeed},     {machine.LogFolder() + kOwnLog, kOldLog},
      {machine.LogFolder() + L"\\other.log", "Not ours\r\n"}, {machine.Temp() + L"\\stranger.tmp", "1"},
      {machine.ProductFolder() + L"\\data.bin", "2"},         {machine.Documents() + L"\\letter.txt", "3"}};
  for (const auto& [path, bytes] : files) support::WriteBytes(path, bytes);
}

const std::vector<Scene>& Scenes() {
  static const std::vector<std::wstring> exchange{L"\\updates.ini", L"\\installedupdates.dat"};
  static const std::vector<Scene> scenes{
      {'c', "check", Nothing, PatchCheck, exchange, JudgePatchCheck},
      {'d', "check-record", PlaceRecord, PatchCheck, exchange, JudgePatchCheck},
      {'i', "interactive", PlaceRecord, InteractiveCheck, exchange, JudgeInteractiveCheck},
      {'s', "start-up", RemoveSettings, StartUp, {L"QRT15\\korsa.ini"}, JudgeStartUp},
      {'l', "log-append", Nothing, WriteLog, {L".log"}, JudgeLog},
      {'n', "log-new", RemoveOwnLog, WriteLog, {L".log"}, JudgeLog},
      {'p', "options-launch", StartProduct, OptionsAndLaunch, {L"QRT15\\korsa.ini", L".log"}, JudgePage}};
  return scenes;
}

}  // namespace sweep
