#include <doctest.h>

#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <vector>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "framework/message_box.h"
#include "platform/system_library.h"
#include "resource.h"
#include "support/import_hook.h"
#include "support/machine.h"
#include "support/text.h"
#include "update/process_state.h"

using support::ImportHook;
using support::Utf8;

namespace {

constexpr int kBegin = 1001, kLook = 1002;

/// The sheet, with its log page shown before the first check.
struct Sheet : CTavrelSheet {
  using CTavrelSheet::CTavrelSheet;

  bool closed_at_once = false, seen = false;

  void OnInitDialog() override {
    if (closed_at_once) return EndDialog(IDCANCEL);
    PostMessageW(Handle(), WM_COMMAND, kBegin, 0);
  }
  bool OnCommand(int id) override {
    if (id == kBegin) {
      SendMessageW(Handle(), PSM_SETCURSEL, kLogPage, 0);
      PostMessageW(Handle(), WM_COMMAND, kLook, 0);
      return true;
    }
    if (id != kLook) return CTavrelSheet::OnCommand(id);
    // The first check is done.
    seen = IsWindowVisible(Handle()) != FALSE;
    const HWND page = PropSheet_GetCurrentPageHwnd(Handle());
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
    EndDialog(IDOK);
    return true;
  }
};

/// The sheet, with the installation started at once; closed if that does not end it.
struct LaunchingSheet : CTavrelSheet {
  using CTavrelSheet::CTavrelSheet;
  std::wstring log_folder;  ///< not there before the first attempt to write the log
  void OnInitDialog() override { PostMessageW(Handle(), WM_COMMAND, kBegin, 0); }
  bool OnCommand(int id) override {
    if (id != kBegin) return CTavrelSheet::OnCommand(id);
    support::MakeFolder(log_folder);
    PostMessageW(PropSheet_GetCurrentPageHwnd(Handle()), WM_COMMAND, IDC_INSTALL, 0);
    PostMessageW(Handle(), WM_COMMAND, IDCANCEL, 0);
    return true;
  }
};

void WINAPI HiddenStart(STARTUPINFOW* start) {
  start->dwFlags = STARTF_USESHOWWINDOW;
  start->wShowWindow = SW_HIDE;
}

}  // namespace

TEST_CASE("the log page shows the first check, and a run that ends before it leaves its header in the log") {
  const struct {
    bool made, closed_at_once;
    INT_PTR result;
    std::size_t log_lines;
  } cases[] = {{true, false, IDOK, 10}, {true, true, IDCANCEL, 6}, {false, false, -1, 6}};
  for (const auto& c : cases) {
    CAPTURE(c.result);
    const support::Machine machine;
    support::MakeFolder(machine.LogFolder());
    CWinApp app;
    app.UseCommonControls(0xFF);
    app.Run(GetModuleHandleW(nullptr));
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
    RunState run;
    Sheet sheet(run);
    sheet.closed_at_once = c.closed_at_once;
    std::optional<ImportHook<PropertySheetW>> refused;
    if (!c.made) refused.emplace("PropertySheetW", 0u, -1);
    CHECK(sheet.Run() == c.result);
    CHECK(sheet.seen == (c.result == IDOK));
    CHECK((classes == 0xFF && apartments == 1));
    const std::vector<std::wstring> names = support::FileNames(machine.LogFolder());
    REQUIRE(names.size() == 1);
    const std::string log = support::ReadBytes(machine.LogFolder() + L"\\" + names[0]).value_or("");
    CHECK_MESSAGE(static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n')) == c.log_lines, log);
    CHECK(log.find("Invoke Mode: Regular.") != log.npos);
  }
}

TEST_CASE("a program that was started hidden shows its first message box") {
  CWinApp app;
  app.Run(GetModuleHandleW(nullptr));
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

TEST_CASE(
    "patch verification writes its log and launches without a question, also when no processes can be "
    "listed") {
  for (const bool listed : {false, true}) {
    support::Machine machine;
    machine.PlaceExecutable(L"15.0.2.5");
    CWinApp app;
    app.Run(GetModuleHandleW(nullptr));
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
    const ImportHook<MessageBoxW> box("MessageBoxW", [&](auto, auto text, auto...) {
      done += text;
      return IDNO;
    });
    const ImportHook<ShellExecuteW> shell("ShellExecuteW",
                                          [&](auto, auto, auto file, auto parameters, auto folder, auto) {
                                            CHECK_FALSE(support::FileNames(machine.LogFolder()).empty());
                                            done += std::wstring(file) + L" " + parameters + L" in " + folder;
                                            return HINSTANCE{};
                                          });
    RunState run;
    run.LaunchedFromPatchCheck = true;
    run.IconPath = machine.ProductFolder() + L"\\Qrt.exe";
    run.WriteRunHeader();
    LaunchingSheet sheet(run);
    sheet.log_folder = machine.LogFolder();
    CHECK(sheet.Run() == IDOK);
    const std::wstring launched = L"cmd.exe /c \"Qrt.exe /update\" in " + machine.ProductFolder();
    CHECK(Utf8(done) == Utf8((listed ? L"ended, " : L"") + launched));
    CHECK(open.empty());
  }
}

TEST_CASE("a call of a missing library or function fails with the reason") {
  const struct {
    const wchar_t* library;
    const char* function;
    DWORD error;
  } cases[] = {{L"tavrel-missing.dll", "VerQueryValueW", ERROR_MOD_NOT_FOUND},
               {L"version.dll", "TavrelMissing", ERROR_PROC_NOT_FOUND}};
  for (const auto& c : cases) {
    platform::SystemLibrary library(c.library);
    platform::SystemFunction<decltype(&::Beep)> missing(library, c.function, -7);
    CHECK(missing(0, 0) == -7);
    CHECK(GetLastError() == c.error);
  }
}
