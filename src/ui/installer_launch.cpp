#include "ui/installer_launch.h"

#include <windows.h>

#include <shellapi.h>
#include <tlhelp32.h>

#include "framework/application.h"
#include "framework/message_box.h"
#include "framework/wait_cursor.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "product/identity.h"
#include "ui/launch_parameters.h"
#include "ui/patch_apply.h"
#include "ui/ui_texts.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

namespace {

constexpr int kLaunched = 10;
constexpr UINT kTerminatedExitCode = 1;

void Terminate(DWORD process_id) {
  const platform::UniqueKernelHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, process_id));
  if (process) TerminateProcess(process.get(), kTerminatedExitCode);
}

}  // namespace

bool CloseRunningProduct() {
  const platform::UniqueSnapshot snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return false;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  if (!Process32FirstW(snapshot.get(), &entry)) return false;
  do {
    if (identity::kProductImage == entry.szExeFile) Terminate(entry.th32ProcessID);
  } while (Process32NextW(snapshot.get(), &entry));
  return true;
}

void PatchApply::BuildUpdaterCommand() {
  m_strUpdaterCommand = LaunchParameters(m_strUpdaterFile);
}

void PatchApply::WarnAndLog(const std::wstring& entry) {
  sheet_.AppendSheetLine(entry);
  ShowMessage(entry);
}

void PatchApply::OnInstallUpdates() {
  // Where the launch is not made, the cursor is left to the next message that sets it.
  BeginWaitCursor();
  if (m_strUpdaterFolder.empty()) {
    WarnAndLog(ui_texts::kPathNotFound);
    return;
  }
  const std::wstring path = m_strUpdaterFolder + L'\\' + m_strUpdaterFile;
  if (!platform::FileExists(path)) {
    WarnAndLog(ui_texts::kFileNotFound + path);
    return;
  }
  // No is the default: the product is closed without a chance to save.
  constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2;
  if (m_bInteractiveMode && ShowMessage(ui_texts::kCloseProduct, kQuestion) != IDYES) return;

  CloseRunningProduct();
  BuildUpdaterCommand();
  ShellExecuteW(nullptr, L"open", L"cmd.exe", m_strUpdaterCommand.c_str(), m_strUpdaterFolder.c_str(),
                SW_HIDE);
  g_nLaunchStatus = kLaunched;
  EndDialog(IDOK);
  EndWaitCursor();
  UpdatePageState();
  CWinApp::Current()->ExitInstance();
}
