#include <windows.h>

#include <shellapi.h>
#include <tlhelp32.h>

#include <algorithm>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "log/system_log.h"
#include "resource.h"
#include "settings/run_state.h"
#include "support/text.h"
#include "sweep.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"
#include "update/update_texts.h"

namespace sweep {
namespace {

using support::Machine;

constexpr char kOptions[] = "; kept\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n[OTHER]\r\nA=1\r\n";
constexpr char kSeed[] = "[KORSA_URL]\r\nTIMEOUT=20\r\n";
constexpr char kOldLog[] = "Old entry\r\n";
constexpr wchar_t kLogText[] = L"First entry\n\nSecond entry\n\n";
constexpr char kLogLines[] = "First entry\r\nSecond entry\r\n";
constexpr wchar_t kOwnLog[] = L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log";
constexpr wchar_t kSettings[] = L"QRT15\\korsa.ini";
constexpr wchar_t kRecord[] = L"\\installedupdates.dat";

bool Has(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != std::wstring_view::npos;
}

std::string Content(const Files& files, std::wstring_view end) {
  const auto ends = [&](const auto& file) { return file.first.ends_with(end); };
  const auto found = std::find_if(files.begin(), files.end(), ends);
  return found == files.end() ? "(missing)" : found->second;
}

std::wstring Flags(std::wstring_view error, bool failed, bool network, bool updates) {
  return std::wstring(error) + (failed ? L" failed" : L"") + (network ? L" network" : L"") +
         (updates ? L" updates" : L"");
}

Outcome PatchCheck(Machine& machine) {
  g_nUpdateCheckCount = 0;
  g_bCheckFailed = g_bUpdatesAvailable = false;
  g_strPatchErrorText.clear();
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  bool warned = false;
  run.WarnUser = [&](std::wstring_view) { warned = true; };
  const CCheckPatch check(run);
  const auto flags = [&](const std::wstring& error, bool failed, bool updates) {
    return Flags(error, failed, check.m_bNetworkError, updates);
  };
  std::wstring state = flags(check.m_strErrorText, check.m_bCheckFailed, check.m_bUpdatesAvailable);
  if (state != flags(g_strPatchErrorText, g_bCheckFailed, g_bUpdatesAvailable)) state += L" mirrors differ";
  if (warned == Has(run.LogText(), L"Sever settings INI")) state += L" warned wrongly";
  return {run.LogText(), state};
}

Outcome InteractiveCheck(Machine& machine) {
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  SheetUpdateCheck sheet(run);
  g_nUpdateCheckCount = 0;
  sheet.RunUpdateCheck();
  return {sheet.SheetLogText(),
          Flags(sheet.SheetErrorText, sheet.SheetCheckFailed, false, sheet.SheetUpdatesAvailable)};
}

/// The flags follow from the entries, the rule lines frame them, and both files are what they say.
template <bool kTellsNetwork>
std::string JudgeCheck(const Outcome& outcome, const Files& before, const Files& after) {
  const std::wstring& said = outcome.said;
  const std::size_t start = said.rfind(L"\n\n Error : ");
  const bool failed = start != std::wstring::npos;
  const std::wstring error = failed ? said.substr(start + 2, said.find(L"\n\n", start + 2) - start - 2) : L"";
  const std::wstring code = failed ? std::to_wstring(text::ParseDecimal(error.c_str() + 9)) : L"";
  const auto& codes = update_texts::kNetworkErrorCodes;
  const bool network = kTellsNetwork && std::count(codes.begin(), codes.end(), code) != 0;
  if (outcome.state != Flags(error, failed, network, Has(said, L"Update details found.")))
    return "wrong flags; ";
  const bool closed = Has(said, update_texts::kVersionNotFound);
  const std::wstring_view end = closed ? update_texts::kEntriesEnd : update_texts::kUpdatesEnd;
  const bool framed =
      said.starts_with(update_texts::kEntriesStart) && said.ends_with(std::wstring(end) + L"\n\n");
  const std::string list = Content(after, L"\\updates.ini");
  if (list != "(missing)" && !std::string_view(kServedList).starts_with(list)) return "wrong list; ";
  const bool told =
      Has(said, update_texts::kRecordDeleted) || Has(said, update_texts::kRecordDeletedInteractive);
  if (Content(after, kRecord) != (told ? "(missing)" : Content(before, kRecord))) return "wrong record; ";
  return framed ? "" : "rule lines missing; ";
}

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
  const wchar_t* wrong = !check_updates     ? L"updates not checked; "
                         : notes != entries ? L"notes differ; "
                                            : L"";
  return {rights + entries, wrong + run.SettingsFilePath};
}

std::string JudgeStartUp(const Outcome& outcome, const Files&, const Files& after) {
  const std::string file = Content(after, kSettings);
  const std::string with_default = std::string(kSeed) + "CHECKUPDATES=TRUE\r\n";
  const bool whole = file == "(missing)" || file == kSeed || file == with_default;
  return (whole ? "" : "damaged settings: " + file) +
         (Has(outcome.state, L"; ") ? "wrong decision or notes; " : "");
}

Outcome WriteLog(Machine&) {
  g_strCurrentLogFile.clear();
  SystemLog log;
  log.AppendText(kLogText);
  log.OpenSystemLog();
  const std::wstring& errors = log.ErrorText();
  const std::wstring& pending = log.PendingText();
  const wchar_t* kept = pending.empty() ? L"written" : pending.starts_with(kLogText) ? L"kept" : L"lost";
  return {errors.empty() ? errors : errors.substr(errors.find(L"Error in ")),
          kept + std::wstring(g_strCurrentLogFile.ends_with(kOwnLog) ? L" appended" : L"")};
}

/// The text is whole in exactly one file, behind what the file held, or it waits and no file has changed.
std::string JudgeLog(const Outcome& outcome, const Files& before, const Files& after) {
  std::string fresh;
  for (const auto& [path, bytes] : after) fresh += before.contains(path) ? "" : bytes;
  const bool appended = outcome.state == L"written appended";
  const std::string old = Content(before, kOwnLog);
  if (Content(after, kOwnLog) != old + (appended ? kLogLines : "")) return "damaged log; ";
  if (appended || outcome.state == L"kept") return fresh.empty() ? "" : "written twice: " + fresh;
  const bool with_history =
      old == kOldLog && (fresh == std::string(kOldLog) + kLogLines ||
                         fresh.starts_with("Error in System Tavrel Log File updates while"));
  const bool whole = fresh == kLogLines || (with_history && fresh.ends_with(kLogLines));
  return whole && outcome.state == L"written" ? "" : "lost text; ";
}

int ticks = 0;

/// Presses both options and the installer's button as soon as the page stands; later closes what is left.
BOOL CALLBACK UsePage(HWND window, LPARAM) {
  const HWND page = FindWindowExW(window, nullptr, L"#32770", nullptr);
  if (GetDlgItem(page, IDC_INSTALL) == nullptr) return TRUE;
  if (ticks++ != 0) return SendMessageW(window, WM_COMMAND, IDCANCEL, 0) != 0;
  for (const int option : {IDC_CHECK_ON_STARTUP, IDC_HIDE_NETWORK_ERRORS}) {
    SendDlgItemMessageW(page, option, BM_CLICK, 0, 0);
  }
  return SendMessageW(page, WM_COMMAND, IDC_INSTALL, 0) != 0;
}

void CALLBACK OnTick(HWND, UINT, UINT_PTR, DWORD) {
  EnumThreadWindows(GetCurrentThreadId(), UsePage, 0);
}

struct PageApp : CWinApp {
  Machine& machine;
  std::wstring said, state;

  explicit PageApp(Machine& its) : machine(its) {}
  BOOL InitInstance() override {
    CWinApp::InitInstance();
    // One of the room's processes passes for the product, and is neither ended nor updated.
    const support::ImportHook<Process32FirstW> first("Process32FirstW",
                                                     [&](HANDLE list, PROCESSENTRY32W* entry) {
                                                       const BOOL found = first.original(list, entry);
                                                       lstrcpyW(entry->szExeFile, L"Qrt.exe");
                                                       return found;
                                                     });
    const support::ImportHook<TerminateProcess> end("TerminateProcess", [](HANDLE, UINT) { return TRUE; });
    const support::ImportHook<ShellExecuteW> shell(
        "ShellExecuteW", [&](HWND, LPCWSTR, LPCWSTR file, LPCWSTR arguments, LPCWSTR folder, INT) {
          if (folder == machine.ProductFolder()) said += std::wstring(file) + L" " + arguments;
          return HINSTANCE{};
        });
    const support::ImportHook<MessageBoxW> box("MessageBoxW", [&](HWND, LPCWSTR text, LPCWSTR, UINT) {
      said += text;
      return IDYES;
    });
    RunState run;
    run.SettingsFilePath = machine.SettingsFile();
    run.LaunchedFromPatchCheck = true;
    run.IconPath = machine.ProductFolder() + L"\\Qrt.exe";
    CTavrelSheet sheet(run);
    ticks = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, OnTick);
    state = std::to_wstring(sheet.DoModal());
    KillTimer(nullptr, timer);
    return 0;
  }
};

Outcome OptionsAndLaunch(Machine& machine) {
  PageApp app(machine);
  app.Run(GetModuleHandleW(nullptr));
  return {app.said, app.state};
}

std::string JudgePage(const Outcome& outcome, const Files& before, const Files& after) {
  const bool launched = outcome.said == L"cmd.exe /c \"Qrt.exe /update\"" && outcome.state == L"1";
  const bool refused =
      outcome.said.starts_with(L"The patch application file not found.") && outcome.state == L"2";
  if (!launched && !refused) return "wrong launch; ";
  // Whatever was written of the two options, the rest of the file stands.
  std::string now = Content(after, kSettings);
  for (const std::string line : {"CHECKUPDATES=TRUE", "IGNORE_PATCH_ERROR=FALSE"}) {
    const std::size_t start = now.find(line.substr(0, line.find('=')));
    if (start != std::string::npos) now.replace(start, now.find('\r', start) - start, line);
  }
  return now == Content(before, kSettings) ? "" : "damaged settings: " + now;
}

}  // namespace

void Furnish(Machine& machine) {
  machine.Install(support::Layout::one, machine.DefaultProduct());
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings(kOptions);
  support::MakeFolder(machine.LogFolder());
  support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", kSeed);
  support::WriteBytes(machine.LogFolder() + kOwnLog, kOldLog);
  support::WriteBytes(machine.LogFolder() + L"\\other.log", "Not ours\r\n");
  for (const std::wstring& folder : {machine.Temp(), machine.ProductFolder(), machine.Documents()}) {
    support::WriteBytes(folder + L"\\stranger.ini", "[1]\r\n");
  }
}

const std::vector<Scene>& Scenes() {
  constexpr auto nothing = [](Machine&) {};
  constexpr auto with_record = [](Machine& m) { support::WriteBytes(m.Record(), "Varnexa15_0_2_7\r\n"); };
  constexpr auto no_settings = [](Machine& m) { support::RemoveTree(m.Documents() + L"\\Varnexa"); };
  constexpr auto no_log = [](Machine& m) { DeleteFileW((m.LogFolder() + kOwnLog).c_str()); };
  static const std::vector<Scene> scenes{
      {'c', "check", nothing, PatchCheck, {L"\\updates.ini"}, JudgeCheck<true>},
      {'d', "check-record", with_record, PatchCheck, {L"\\updates.ini", kRecord}, JudgeCheck<true>},
      {'i', "interactive", with_record, InteractiveCheck, {L"\\updates.ini", kRecord}, JudgeCheck<false>},
      {'s', "start-up", no_settings, StartUp, {kSettings}, JudgeStartUp},
      {'l', "log-append", nothing, WriteLog, {L".log"}, JudgeLog},
      {'n', "log-new", no_log, WriteLog, {L".log"}, JudgeLog},
      {'p', "options-launch", nothing, OptionsAndLaunch, {kSettings, L".log"}, JudgePage}};
  return scenes;
}

}  // namespace sweep
