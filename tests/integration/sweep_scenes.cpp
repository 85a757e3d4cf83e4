#include <windows.h>

#include <shellapi.h>
#include <tlhelp32.h>

#include <filesystem>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "log/system_log.h"
#include "platform/journaled_file.h"
#include "resource.h"
#include "settings/run_state.h"
#include "sweep.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

namespace sweep {
namespace {

using support::Machine;

constexpr wchar_t kLogText[] = L"First entry\n\nSecond entry\n\n";
constexpr char kSettings[] = "# kept\r\nCHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n[OTHER]\r\nA=1\r\n";
constexpr wchar_t kOwnLog[] = L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log";

/// What a check said, and its results; the last entry of an error must be its error text.
std::wstring Report(const std::wstring& log, const std::wstring& error, bool failed, bool updates) {
  const bool told = log.rfind(L"\n\n Error : ") == log.rfind(L"\n\n" + error + L"\n\n");
  return log + L"-- " + (updates ? L"+updates" : L"") + (failed ? L"+failed" : L"") +
         (failed == error.empty() || (failed && !told) ? L"+wrong error text" : L"");
}

std::wstring PatchCheck(Machine& machine) {
  g_nUpdateCheckCount = 0;
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  const wchar_t* warned = L"";
  run.WarnUser = [&](auto) { warned = L"+warned"; };
  const CCheckPatch check(run);
  return Report(run.LogText(), check.m_strErrorText, check.m_bCheckFailed, check.m_bUpdatesAvailable) +
         (check.m_bNetworkError ? L"+network" : L"") + warned;
}

std::wstring InteractiveCheck(Machine& machine) {
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  SheetUpdateCheck sheet(run);
  g_nUpdateCheckCount = 0;
  sheet.RunUpdateCheck();
  return Report(sheet.SheetLogText(), sheet.SheetErrorText, sheet.SheetCheckFailed,
                sheet.SheetUpdatesAvailable);
}

std::wstring StartUp(Machine&) {
  RunState run;
  run.WriteRunHeader();
  const wchar_t* const decision = run.PrepareServerSettings() ? L"-- +checks" : L"-- ";
  run.ResolveSettingsFile();
  return run.LogText() + decision + run.SettingsFilePath;
}

std::wstring WriteLog(Machine&) {
  g_strCurrentLogFile.clear();
  SystemLog log;
  log.AppendText(kLogText);
  log.OpenSystemLog();
  std::wstring left = log.PendingText();
  text::ReplaceAll(left, kLogText + log.ErrorText(), L"+kept");
  return log.ErrorText() + L"-- " + left + g_strCurrentLogFile;
}

/// Presses both options and the installer's button; closes what is left.
void CALLBACK UsePage(HWND sheet, UINT, UINT_PTR timer, DWORD) {
  KillTimer(sheet, timer);
  const HWND page = FindWindowExW(sheet, nullptr, L"#32770", nullptr);
  for (const int option : {IDC_CHECK_ON_STARTUP, IDC_HIDE_NETWORK_ERRORS}) {
    SendDlgItemMessageW(page, option, BM_CLICK, 0, 0);
  }
  SendMessageW(page, WM_COMMAND, IDC_INSTALL, 0);
  PostMessageW(sheet, WM_COMMAND, IDCANCEL, 0);
}

struct UsedSheet : CTavrelSheet {
  using CTavrelSheet::CTavrelSheet;
  void OnInitDialog() override { SetTimer(Handle(), 1, 10, UsePage); }
};

std::wstring OptionsAndLaunch(Machine& machine) {
  CWinApp app;
  app.Run(GetModuleHandleW(nullptr));
  std::wstring said;
  // One of the room's processes passes for the product, and is neither ended nor updated.
  const support::ImportHook<Process32FirstW> first("Process32FirstW", [&](HANDLE list, auto* entry) {
    const BOOL found = first.original(list, entry);
    lstrcpyW(entry->szExeFile, L"Qrt.exe");
    return found;
  });
  const support::ImportHook<TerminateProcess> end("TerminateProcess", [](auto...) { return TRUE; });
  const support::ImportHook<ShellExecuteW> shell(
      "ShellExecuteW", [&](auto, auto, auto file, auto arguments, auto folder, auto) {
        said += std::wstring(file) + L" " + arguments + L" in " + folder;
        return HINSTANCE{};
      });
  const support::ImportHook<MessageBoxW> box("MessageBoxW", [&](auto, auto text, auto...) {
    said += text;
    return IDYES;
  });
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  run.LaunchedFromPatchCheck = true;
  run.IconPath = machine.ProductFolder() + L"\\Qrt.exe";
  UsedSheet sheet(run);
  const INT_PTR result = sheet.Run();
  text::ReplaceAll(said, L"\n", L"/");
  return L"-- " + said + L" " + std::to_wstring(result);
}

/// A run was ended while it wrote the settings: they are torn, and their journal is still there.
void EndWhileWriting(Machine& machine) {
  const std::wstring file = machine.SettingsFile(), journal = file + L".1-1.journal";
  DeleteFileW(journal.c_str());
  machine.WriteSettings(kSettings);
  {
    const support::ImportHook<SetFileInformationByHandle> kept("SetFileInformationByHandle", 5);
    const support::ImportHook<SetFilePointerEx> not_emptied("SetFilePointerEx", 5);
    const support::ImportHook<DeleteFileW> not_deleted("DeleteFileW", 5);
    platform::JournaledFile(file).Rewrite([&](auto) {
      machine.WriteSettings("");
      return true;
    });
  }
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(file).parent_path())) {
    if (entry.path().extension() == L".journal") MoveFileW(entry.path().c_str(), journal.c_str());
  }
}

}  // namespace

void Furnish(Machine& machine) {
  machine.Install(support::Layout::one, machine.DefaultProduct());
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
  constexpr auto nothing = [](Machine&) {};
  constexpr auto with_record = [](Machine& m) { support::WriteBytes(m.Record(), "Varnexa15_0_2_7\r\n"); };
  constexpr auto no_settings = [](Machine& m) { support::RemoveTree(m.Documents() + L"\\Varnexa"); };
  constexpr auto no_log = [](Machine& m) { DeleteFileW((m.LogFolder() + kOwnLog).c_str()); };
  static const std::vector<Scene> scenes{
      {L'c', "check", nullptr, nothing, PatchCheck},
      {L'd', "check-record", L"GetTempPathW", with_record, PatchCheck},
      {L'i', "interactive", L"GetTempPathW", with_record, InteractiveCheck},
      {L's', "start-up", nullptr, no_settings, StartUp},
      {L'k', "start-up-ended", nullptr, EndWhileWriting, StartUp},
      {L'l', "log-append", L"SHGetSpecialFolderPathW", nothing, WriteLog},
      {L'n', "log-new", L"SHGetSpecialFolderPathW", no_log, WriteLog},
      {L'p', "options-launch", nullptr, nothing, OptionsAndLaunch}};
  return scenes;
}

}  // namespace sweep
