#include <windows.h>

#include "log/system_log.h"
#include "platform/sharing.h"
#include "settings/run_state.h"
#include "sweep.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"

namespace sweep {
namespace {

using support::Machine;

constexpr wchar_t kLogText[] = L"First entry\n\nSecond entry\n\n";
constexpr char kSettings[] = "# kept\r\nCHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n[OTHER]\r\nA=1\r\n";
constexpr wchar_t kOwnLog[] = L"\\QRT_15_SystemTavrel_01Jan2020_01_00_AM.log";

/// The entries of a check and its results; the last error entry must be the error text.
std::wstring PatchCheck(Machine& machine) {
  g_nUpdateCheckCount = 0;
  platform::g_nWaitLeftMs = 0;
  RunState run;
  run.SettingsFilePath = machine.SettingsFile();
  const wchar_t* warned = L"";
  run.WarnUser = [&](auto) { warned = L"+warned"; };
  const CCheckPatch check(run);
  const std::wstring &log = run.LogText(), &error = check.m_strErrorText;
  const bool told = log.rfind(L"\n\n Error : ") == log.rfind(L"\n\n" + error + L"\n\n");
  return log + L"-- " + (check.m_bUpdatesAvailable ? L"+updates" : L"") +
         (check.m_bCheckFailed ? L"+failed" : L"") +
         (check.m_bCheckFailed == error.empty() || (check.m_bCheckFailed && !told) ? L"+wrong error text"
                                                                                   : L"") +
         (check.m_bNetworkError ? L"+network" : L"") + warned;
}

std::wstring StartUp(Machine&) {
  RunState run;
  run.WriteRunHeader();
  const wchar_t* const decision = run.PrepareServerSettings() ? L"-- +checks" : L"-- ";
  run.ResolveSettingsFile();
  return run.LogText() + decision + (run.SettingsFilePath.empty() ? L"" : L"+") + run.SettingsFilePath;
}

std::wstring WriteLog(Machine&) {
  g_strCurrentLogFile.clear();
  SystemLog log;
  log.AppendEntry(L"First entry\n\nSecond entry");
  log.OpenSystemLog();
  std::wstring left = log.PendingText();
  text::ReplaceAll(left, kLogText + log.ErrorText(), L"+kept");
  return log.ErrorText() + L"-- " + left + g_strCurrentLogFile;
}

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
  constexpr auto with_record = [](Machine& m) { support::WriteBytes(m.Record(), "Varnexa15_0_2_7\r\n"); };
  constexpr auto no_settings = [](Machine& m) { support::RemoveTree(m.Documents() + L"\\Varnexa"); };
  static const std::vector<Scene> scenes{{"check", false, with_record, PatchCheck},
                                         {"start-up", false, no_settings, StartUp},
                                         {"log", true, [](Machine&) {}, WriteLog}};
  return scenes;
}

}  // namespace sweep
