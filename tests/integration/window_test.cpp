#include <doctest.h>

#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <vector>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "framework/dialogs.h"
#include "platform/system_library.h"
#include "resource.h"
#include "support/import_hook.h"
#include "support/machine.h"
#include "support/text.h"
#include "update/process_state.h"

using support::ImportHook;
using support::Utf8;

namespace {

constexpr int kStep = 1001;

/// The application before its first window, on a private machine.
struct Program {
  support::Machine machine;
  CWinApp app;
  RunState run;

  Program() { app.Run(GetModuleHandleW(nullptr)); }
};

void WINAPI Cancel(HWND sheet, UINT, UINT_PTR, DWORD) {
  PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
}

/// A sheet that makes its steps, each in a message of its own; without any it closes before it is visible. A
/// timer, whose message comes after all posted ones, cancels a sheet that is still open.
struct Sheet : CTavrelSheet {
  using CTavrelSheet::CTavrelSheet;

  std::deque<std::function<void()>> steps;
  bool destroyed = false;  ///< the object got the window's last message

  void OnInitDialog() override {
    if (steps.empty()) return EndDialog(IDCANCEL);
    PostMessageW(Handle(), WM_COMMAND, kStep, 0);
    SetTimer(Handle(), 1, 1000, Cancel);
  }
  bool OnCommand(int id) override {
    if (id != kStep) return CTavrelSheet::OnCommand(id);
    steps.front()();
    steps.pop_front();
    if (!steps.empty()) PostMessageW(Handle(), WM_COMMAND, kStep, 0);
    return true;
  }
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override {
    destroyed |= message == WM_NCDESTROY;
    return CTavrelSheet::OnMessage(message, wparam, lparam, result);
  }
};

void CheckLogPage(HWND sheet) {
  CHECK(IsWindowVisible(sheet));
  const HWND page = PropSheet_GetCurrentPageHwnd(sheet);
  std::wstring log(10000, L'\0');
  log.resize(GetDlgItemTextW(page, IDC_LOG_TEXT, log.data(), 10000));
  CHECK_MESSAGE(log.ends_with(L"Registered Data Entries Check : End ===========\r\n\r\n"), Utf8(log));
  CHECK(IsWindowEnabled(GetDlgItem(page, IDC_SAVE_LOG)));
  CHECK(GetFocus() == GetDlgItem(page, IDC_SAVE_LOG));
  std::wstring opened = L"nothing";
  const ImportHook<ShellExecuteW> shell(
      "ShellExecuteW", [&](auto, auto, auto file, auto...) { return opened = file, HINSTANCE{}; });
  SendDlgItemMessageW(page, IDC_LOG_FILE, WM_LBUTTONDOWN, 0, 0);
  CHECK(Utf8(opened) == Utf8(g_strCurrentLogFile));
  SendDlgItemMessageW(page, IDC_LOG_FILE, WM_SETCURSOR, 0, 0);
  CHECK(GetCursor() == LoadCursorW(nullptr, IDC_HAND));
}

void WINAPI HiddenStart(STARTUPINFOW* start) {
  start->dwFlags = STARTF_USESHOWWINDOW;
  start->wShowWindow = SW_HIDE;
}

}  // namespace

TEST_CASE("the log page shows the first check, and a run that ends before it leaves its header in the log") {
  for (const INT_PTR result : {IDOK, IDCANCEL, -1}) {
    CAPTURE(result);
    Program program;
    support::MakeFolder(program.machine.LogFolder());
    program.app.UseCommonControls(0xFF);
    DWORD classes = 0, apartments = 0;
    const ImportHook<InitCommonControlsEx> controls("InitCommonControlsEx", [&](const auto* asked) {
      classes += asked->dwICC;
      return controls.original(asked);
    });
    const ImportHook<CoInitializeEx> com("CoInitializeEx", [&](auto... all) {
      ++apartments;
      return com.original(all...);
    });
    g_nUpdateCheckCount = 0;
    Sheet sheet(program.run);
    const auto show_log = [&] { SendMessageW(sheet.Handle(), PSM_SETCURSEL, Sheet::kLogPage, 0); };
    const auto look = [&] { CheckLogPage(sheet.Handle()), sheet.EndDialog(IDOK); };
    if (result == IDOK) sheet.steps = {show_log, look};
    std::optional<ImportHook<PropertySheetW>> refused;
    if (result == -1) refused.emplace("PropertySheetW", 0u, -1);
    CHECK(sheet.Run() == result);
    CHECK(sheet.destroyed == (result != -1));
    CHECK((classes == 0xFF && apartments == 1));
    const std::string log = support::ReadBytes(g_strCurrentLogFile).value_or("");
    CHECK_MESSAGE(std::count(log.begin(), log.end(), '\n') == (result == IDOK ? 10 : 6), log);
    CHECK(log.find("Invoke Mode: Regular.") != log.npos);
  }
}

TEST_CASE_FIXTURE(Program, "a program that was started hidden shows its first message box") {
  void** const slot = support::FindImport("GetStartupInfoW");
  void* const original = support::ExchangeImport(slot, reinterpret_cast<void*>(&HiddenStart));
  // Windows hides the window of the first call, and the call for a message box is its own.
  int calls = 0;
  const ImportHook<ShowWindow> show("ShowWindow", [&](auto...) { return ++calls, FALSE; });
  const ImportHook<MessageBoxW> box("MessageBoxW", [&](auto...) { return calls; });
  CHECK(ShowMessage(L"first") == 1);
  CHECK(ShowMessage(L"second") == 1);
  support::ExchangeImport(slot, original);
}

TEST_CASE_FIXTURE(Program,
                  "patch verification writes its log and launches without a question, also when no processes "
                  "can be listed") {
  bool listed = false;
  SUBCASE("listed") {
    listed = true;
  }
  SUBCASE("not listed") {}
  machine.PlaceExecutable(L"15.0.2.5");
  std::wstring done;
  std::vector<HANDLE> open;
  const ImportHook<CreateToolhelp32Snapshot> list("CreateToolhelp32Snapshot", [&](auto... all) {
    if (!listed) return support::Fail(5, INVALID_HANDLE_VALUE);
    return open.emplace_back(list.original(all...));
  });
  const ImportHook<Process32FirstW> first("Process32FirstW", [](auto, auto* entry) {
    lstrcpyW(entry->szExeFile, L"Qrt.exe");
    return TRUE;
  });
  const ImportHook<OpenProcess> process("OpenProcess", [&](auto...) {
    return open.emplace_back(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  });
  const ImportHook<TerminateProcess> end("TerminateProcess", [&](auto...) {
    done += L"ended, ";
    return TRUE;
  });
  const ImportHook<CloseHandle> close("CloseHandle", [&](HANDLE handle) {
    std::erase(open, handle);
    return close.original(handle);
  });
  const ImportHook<MessageBoxW> box("MessageBoxW", 0u, IDNO);
  const ImportHook<ShellExecuteW> shell("ShellExecuteW",
                                        [&](auto, auto, auto file, auto parameters, auto folder, auto) {
                                          CHECK_FALSE(support::FileNames(machine.LogFolder()).empty());
                                          done += std::wstring(file) + L" " + parameters + L" in " + folder;
                                          return HINSTANCE{};
                                        });
  run.LaunchedFromPatchCheck = true;
  run.IconPath = machine.ProductFolder() + L"\\Qrt.exe";
  run.WriteRunHeader();
  Sheet sheet(run);
  sheet.steps = {[&] {
    // Not there before the first attempt to write the log.
    support::MakeFolder(machine.LogFolder());
    PostMessageW(PropSheet_GetCurrentPageHwnd(sheet.Handle()), WM_COMMAND, IDC_INSTALL, 0);
  }};
  CHECK(sheet.Run() == IDOK);
  const std::wstring launched = L"cmd.exe /c \"Qrt.exe /update\" in " + machine.ProductFolder();
  CHECK(Utf8(done) == Utf8((listed ? L"ended, " : L"") + launched));
  CHECK(open.empty());
}

TEST_CASE("a call of a missing library or function fails with the reason") {
  const auto check = [](const wchar_t* library, const char* function, DWORD error) {
    platform::SystemLibrary loaded(library);
    platform::SystemFunction<decltype(&::Beep)> missing(loaded, function, -7);
    CHECK(missing(0, 0) == -7);
    CHECK(GetLastError() == error);
  };
  check(L"tavrel-missing.dll", "VerQueryValueW", ERROR_MOD_NOT_FOUND);
  check(L"version.dll", "TavrelMissing", ERROR_PROC_NOT_FOUND);
}
