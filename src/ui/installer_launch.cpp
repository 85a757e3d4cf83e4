#include "ui/installer_launch.h"

#include <windows.h>

#include <shellapi.h>
#include <tlhelp32.h>

#include "platform/folders.h"
#include "platform/handles.h"
#include "product/identity.h"
#include "ui/ui_texts.h"
#include "update/process_state.h"

namespace {

constexpr int kLaunched = 10;
constexpr UINT kTerminatedExitCode = 1;

void Terminate(DWORD process_id) {
  const platform::UniqueKernelHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, process_id));
  if (process) TerminateProcess(process.get(), kTerminatedExitCode);
}

}  // namespace

std::wstring LaunchObstacle(const std::wstring& folder, const std::wstring& file) {
  if (folder.empty()) return ui_texts::kPathNotFound;
  const std::wstring path = folder + L'\\' + file;
  return platform::FileExists(path) ? std::wstring() : ui_texts::kFileNotFound + path;
}

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

void LaunchUpdate(const std::wstring& folder, const std::wstring& parameters) {
  ShellExecuteW(nullptr, L"open", L"cmd.exe", parameters.c_str(), folder.c_str(), SW_HIDE);
  g_nLaunchStatus = kLaunched;
}
