#include <doctest.h>

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

#include "app/tavrel_sheet.h"
#include "framework/application.h"
#include "framework/dialogs.h"
#include "platform/system_library.h"
#include "resource.h"
#include "support/machine.h"
#include "ui/ui_texts.h"
#include "update/process_state.h"

using namespace support;

namespace {

constexpr int kStep = 1001;
constexpr DWORD kLiveRegionChanged = 0x8019;  // EVENT_OBJECT_LIVEREGIONCHANGED of Windows 8

/// The application before its first window, on a private machine.
struct Program {
  Machine machine;
  CWinApp app;
  RunState run;

  Program() { app.Run(GetModuleHandleW(nullptr)); }
};

void WINAPI Cancel(HWND sheet, UINT, UINT_PTR, DWORD) {
  PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
}

/// A sheet that makes its steps, each in a message of its own after the messages of the step before; without
/// any it closes at once. A timer, whose message comes after all posted ones, cancels a sheet that is still
/// open.
struct Sheet : CTavrelSheet {
  using CTavrelSheet::CTavrelSheet;

  std::deque<std::function<void()>> steps;

  HWND Page() const { return PropSheet_GetCurrentPageHwnd(Handle()); }
  HWND Control(int id) const { return GetDlgItem(Page(), id); }
  void ShowPage(WPARAM index) const { SendMessageW(Handle(), PSM_SETCURSEL, index, 0); }
  void Press(WPARAM key, int id) const {
    SetFocus(Control(id));
    PostMessageW(Control(id), WM_KEYDOWN, key, 0);
  }
  /// Background and text colour that a static text is painted with.
  std::pair<COLORREF, COLORREF> Colors(int id) const {
    const HDC context = GetDC(Control(id));
    const LRESULT brush = SendMessageW(Page(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                                       reinterpret_cast<LPARAM>(Control(id)));
    LOGBRUSH background{};
    GetObjectW(reinterpret_cast<HBRUSH>(brush), sizeof background, &background);
    const COLORREF text = GetTextColor(context);
    ReleaseDC(Control(id), context);
    return {background.lbColor, text};
  }

  void OnInitDialog() override {
    if (steps.empty()) return EndDialog(IDOK);
    PostMessageW(Handle(), WM_COMMAND, kStep, 0);
    SetTimer(Handle(), 1, 2000, Cancel);
  }
  bool OnCommand(int id) override {
    if (id != kStep) return CTavrelSheet::OnCommand(id);
    steps.front()();
    steps.pop_front();
    if (!steps.empty()) PostMessageW(Handle(), WM_COMMAND, kStep, 0);
    return true;
  }
};

}  // namespace

TEST_CASE_FIXTURE(Program, "a screen reader is told the result, and the log page can be used by keyboard") {
  MakeFolder(machine.LogFolder());
  g_nUpdateCheckCount = 0;
  std::wstring told, opened;
  const ImportHook<NotifyWinEvent> notify("NotifyWinEvent", [&](DWORD event, HWND window, auto...) {
    wchar_t text[100] = L"";
    GetWindowTextW(window, text, 100);
    if (event == kLiveRegionChanged) told += text;
  });
  const ImportHook<ShellExecuteW> shell(
      "ShellExecuteW", [&](auto, auto, auto file, auto...) { return opened += file, HINSTANCE{}; });
  Sheet sheet(run);
  sheet.steps = {[&] { sheet.ShowPage(1); },
                 [&] {
                   std::wstring log(10000, L'\0');
                   log.resize(GetDlgItemTextW(sheet.Page(), IDC_LOG_TEXT, log.data(), 10000));
                   CHECK_MESSAGE(log.ends_with(L"Registered Data Entries Check : End ===========\r\n\r\n"),
                                 Utf8(log));
                   CHECK(GetFocus() == sheet.Control(IDC_SAVE_LOG));
                   sheet.Press(VK_TAB, IDC_LOG_TEXT);
                 },
                 [&] {
                   CHECK(GetFocus() == sheet.Control(IDC_SAVE_LOG));
                   sheet.Press(VK_RETURN, IDC_LOG_FILE);
                 },
                 [&] {
                   CHECK(Utf8(opened) == Utf8(g_strCurrentLogFile));
                   SendMessageW(sheet.Control(IDC_LOG_FILE), WM_LBUTTONDOWN, 0, 0);
                   CHECK(Utf8(opened) == Utf8(g_strCurrentLogFile + g_strCurrentLogFile));
                   SendMessageW(sheet.Control(IDC_LOG_FILE), WM_SETCURSOR, 0, 0);
                   CHECK(GetCursor() == LoadCursorW(nullptr, IDC_HAND));
                   sheet.Press(VK_ESCAPE, IDC_LOG_TEXT);
                 },
                 [] {}};
  CHECK(sheet.Run() == IDCANCEL);
  CHECK(Utf8(told) == Utf8(ui_texts::kNotInstalled));
  CHECK(sheet.steps.size() == 1);  // Escape was first.
}

TEST_CASE_FIXTURE(Program, "the texts follow the system's colours and stay readable on them") {
  constexpr COLORREF kBlack = RGB(0, 0, 0), kWhite = RGB(255, 255, 255), kBlue = RGB(0, 0, 200),
                     kGrey = RGB(99, 99, 99);
  constexpr int kElements[] = {COLOR_3DFACE, COLOR_BTNTEXT, COLOR_HOTLIGHT};
  COLORREF usual[3];
  std::transform(std::begin(kElements), std::end(kElements), usual, GetSysColor);
  struct Theme {
    COLORREF colors[3];  ///< of the background, buttons and links
    COLORREF message, link;
  };
  Sheet sheet(run);
  const auto look = [&] {
    for (const Theme& theme : {Theme{{kWhite, kBlack, kBlue}, kBlack, kBlue},
                               Theme{{kBlack, kWhite, kWhite - 1}, kWhite, kWhite - 1},
                               Theme{{kBlack, kWhite, kBlue}, kWhite, RGB(0, 102, 204)},
                               Theme{{kGrey, kWhite, kGrey}, kBlack, kWhite}}) {
      SetSysColors(3, kElements, theme.colors);
      sheet.ShowPage(0);
      CHECK(sheet.Colors(IDC_MESSAGE) == std::pair(theme.colors[0], theme.message));
      sheet.ShowPage(1);
      CHECK(sheet.Colors(IDC_LOG_FILE) == std::pair(theme.colors[0], theme.link));
    }
    SetSysColors(3, kElements, usual);
    sheet.EndDialog(IDOK);
  };
  sheet.steps = {look};
  CHECK(sheet.Run() == IDOK);
}

TEST_CASE("a run whose sheet ends before its check, or cannot be shown, leaves its header in the log") {
  for (const char* failing : {"", "PropertySheetW", "SetWindowSubclass"}) {
    CAPTURE(failing);
    Program program;
    MakeFolder(program.machine.LogFolder());
    g_nUpdateCheckCount = 0;
    Sheet sheet(program.run);
    std::optional<ImportHook<PropertySheetW>> refused;
    std::optional<ImportHook<SetWindowSubclass>> unattached;
    if (failing == std::string("PropertySheetW")) refused.emplace(failing, 0u, -1);
    if (failing == std::string("SetWindowSubclass")) unattached.emplace(failing, 0u, FALSE);
    CHECK(sheet.Run() == (*failing == '\0' ? IDOK : -1));
    CHECK(sheet.Handle() == nullptr);
    const std::string log = ReadBytes(g_strCurrentLogFile).value_or("");
    CHECK_MESSAGE(log.ends_with("Invoke Mode: Regular.\r\n"), log);
  }
}

TEST_CASE("a program that was started hidden or minimised shows its first message box") {
  for (const int command : {SW_HIDE, SW_MINIMIZE, SW_SHOWMINIMIZED, SW_SHOWMINNOACTIVE, SW_FORCEMINIMIZE}) {
    CAPTURE(command);
    const Program program;
    const ImportHook<GetStartupInfoW> start("GetStartupInfoW", [&](STARTUPINFOW* info) {
      info->dwFlags = STARTF_USESHOWWINDOW;
      info->wShowWindow = static_cast<WORD>(command);
    });
    // Windows hides the window of the first call, and the call for a message box is its own.
    int calls = 0;
    const ImportHook<ShowWindow> show("ShowWindow", [&](auto...) { return ++calls, FALSE; });
    const ImportHook<MessageBoxW> box("MessageBoxW", [&](auto...) { return calls; });
    CHECK(ShowMessage(L"first") == 1);
    CHECK(ShowMessage(L"second") == 1);
  }
}

TEST_CASE_FIXTURE(Program, "a start-up check's update is launched hidden, without a question") {
  machine.PlaceExecutable(L"15.0.2.5");
  std::wstring done;
  const ImportHook<CreateToolhelp32Snapshot> list("CreateToolhelp32Snapshot", 5u, INVALID_HANDLE_VALUE);
  const ImportHook<MessageBoxW> box("MessageBoxW", 0u, IDNO);
  const ImportHook<ShellExecuteW> shell("ShellExecuteW",
                                        [&](auto, auto, auto file, auto parameters, auto folder, auto show) {
                                          CHECK_FALSE(FileNames(machine.LogFolder()).empty());
                                          done = std::wstring(show == SW_HIDE ? L"hidden " : L"shown ") +
                                                 file + L" " + parameters + L" in " + folder;
                                          return HINSTANCE{};
                                        });
  run.LaunchedFromPatchCheck = true;
  run.IconPath = machine.ProductFolder() + L"\\Qrt.exe";
  run.WriteRunHeader();
  Sheet sheet(run);
  sheet.steps = {[&] {
    // Not there before the first attempt to write the log.
    MakeFolder(machine.LogFolder());
    PostMessageW(sheet.Page(), WM_COMMAND, IDC_INSTALL, 0);
  }};
  CHECK(sheet.Run() == IDOK);
  CHECK(Utf8(done) == Utf8(L"hidden cmd.exe /c \"Qrt.exe /update\" in " + machine.ProductFolder()));
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
