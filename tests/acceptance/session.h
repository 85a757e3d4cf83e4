#pragma once

#include <doctest.h>

#include <windows.h>

#include <dlgs.h>
#include <prsht.h>

#include <optional>
#include <regex>
#include <set>

#include "acceptance/driver.h"
#include "product/identity.h"
#include "ui/ui_texts.h"

using support::Utf8;

/// Where Wine looks how to find libraries of the utility.
inline constexpr wchar_t kLibraryRules[] = L"Software\\Wine\\AppDefaults\\QRTTavrelUtility.exe\\DllOverrides";

inline int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++count;
  return count;
}

/// Presses keys one after the other and releases them in the reverse order, as a keyboard does.
inline void Press(const std::vector<BYTE>& keys) {
  for (auto key = keys.begin(); key != keys.end(); ++key) keybd_event(*key, 0, 0, 0);
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}

inline void Close(HWND box, int button) {
  PostMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
  CHECK(WaitUntil([box] { return !IsWindowVisible(box); }));
}

/// A user, the utility and a server that offers one pack (15.0.2.7) to a product at 15.0.2.5.
struct Session {
  InstalledMachine machine;
  support::HttpReply reply = support::Reply(200, kOnePack);
  std::optional<support::HttpServer> server{std::in_place, reply};
  std::size_t requests = 0;  ///< how many the server had when they were counted last
  std::optional<Run> run;
  HWND save_dialog = nullptr;
  std::string page, log_file;  ///< texts of the log page and the log file when they were looked at last

  Session() { RegDeleteTreeW(HKEY_CURRENT_USER, kLibraryRules); }
  HWND Control(int id) const { return run->Control(id); }
  void ShowPage(WPARAM index) const { Ask(run->Sheet(), PSM_SETCURSEL, index); }

  // --- Before a run.

  /// The server answers the next requests with `status` and a list of one pack.
  void Serve(int status, unsigned pause_ms = 0) {
    reply = support::Reply(status, kOnePack);
    reply.pause_ms = pause_ms;
    server.emplace(reply);
    requests = 0;
  }
  void RegisterIcon(const std::wstring& path) {
    support::SetRegistryText(support::UninstallKey(support::Layout::two), L"DisplayIcon", path);
  }

  // --- What the user does.

  /// Starts the utility and ends one that still runs.
  void Begin(const wchar_t* arguments = L"") {
    page.clear();
    run.reset();
    requests = server->Requests().size();
    run.emplace(machine.program, arguments);
  }
  void Start(const wchar_t* arguments = L"") {
    Begin(arguments);
    Answered();
  }
  /// Waits until the page shows a result.
  void Answered() { REQUIRE(run->Answered()); }
  /// Waits until the utility waits for the server.
  void Blocked() {
    REQUIRE(WaitUntil([&] { return server->Requests().size() > requests; }));
    requests = server->Requests().size();
  }
  void Ended() { CHECK(run->End() == "exit code 0"); }
  void Click(int id) { PostMessageW(Control(id), BM_CLICK, 0, 0); }
  /// As a click, whether or not the control is enabled.
  void Command(int id) { Ask(GetParent(Control(id)), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED)); }
  void SaveAs(const wchar_t* name) {
    ShowPage(1);
    Click(IDC_SAVE_LOG);
    save_dialog = run->Dialog(nullptr);
    CHECK(WindowText(GetDlgItem(save_dialog, cmb1)) == "Text File(*.txt)");
    const std::wstring path = machine.File(name);
    Ask(GetDlgItem(save_dialog, cmb13), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageW(GetDlgItem(save_dialog, IDOK), BM_CLICK, 0, 0);
  }

  // --- What has to be seen.

  /// A box with this text; it stays open.
  HWND Box(std::wstring_view text, std::wstring_view title = identity::kWindowTitle) {
    constexpr int kTextOfBox = 0xFFFF;
    const HWND box = run->Dialog(save_dialog);
    CHECK(WindowText(GetDlgItem(box, kTextOfBox)) == Utf8(text));
    CHECK(WindowText(box) == Utf8(title));
    return box;
  }
  /// The page shows `text` and the note, and of its buttons this one alone is enabled; 0: none.
  void Page(std::string_view text, int enabled) {
    const std::string message = WindowText(Control(IDC_MESSAGE));
    CHECK_MESSAGE(Count(message, text) == 1, message);
    CHECK(WindowText(Control(IDC_NOTE)) == Utf8(ui_texts::kNote));
    for (const int id : {IDC_INSTALL, IDC_RETRY, IDC_CONTINUE}) {
      CHECK((IsWindowEnabled(Control(id)) != FALSE) == (id == enabled));
    }
    CHECK((IsWindowVisible(Control(IDC_CONTINUE)) != FALSE) == (enabled == IDC_CONTINUE));
    CHECK_FALSE(IsWindowVisible(Control(IDC_HIDE_NETWORK_ERRORS)));
  }
  /// Whether the screen shows the control's text, more than one colour along a line where it begins, while
  /// the utility is blocked.
  void Painted(int id, bool painted) {
    RECT area{};
    GetWindowRect(Control(id), &area);
    const auto seen = [&] {
      const HDC screen = GetDC(nullptr);
      std::set<COLORREF> colors;
      for (LONG x = area.left + 4; x < area.right - 5; ++x) colors.insert(GetPixel(screen, x, area.top + 8));
      ReleaseDC(nullptr, screen);
      return colors.size() > 1;
    };
    // The screen shows a drawing a moment later, but long before a slow server answers.
    CHECK(WaitUntil([&] { return seen() == painted; }, reply.pause_ms / 2));
  }
  /// The log page has `text` so many times, and shows where the log file is.
  void Logged(std::string_view text, int times = 1) {
    ShowPage(1);
    page = WindowText(Control(IDC_LOG_TEXT));
    CHECK(WindowText(Control(IDC_LOG_FILE)) == Utf8(machine.LogFile()));
    ShowPage(0);
    CHECK_MESSAGE(Count(page, text) == times, page);
  }
  /// Something was added to the log file: this text once, and at the end the checks of the log page.
  void LogFile(std::string_view text) {
    const std::string log = machine.Log();
    REQUIRE(log.starts_with(log_file));
    // The file has the settings' lines between the header and the first check.
    const std::size_t first = page.find("=========== Registered Data Entries Check : Start");
    const std::string checks = page.substr(std::min(first, page.size()));
    CHECK_MESSAGE(log.ends_with(std::regex_replace(checks, std::regex("\n\n?"), "\r\n")), log);
    CHECK_MESSAGE(Count(log.substr(log_file.size()), std::string(text) + "\r\n") == 1, log);
    log_file = log;
  }
  void File(const std::wstring& path, const std::string& text) {
    const auto there = [&] { return support::ReadBytes(path).value_or("none"); };
    WaitUntil([&] { return there() == text; });
    CHECK(there() == text);
  }
  void Shown(int id) {
    CHECK(WaitUntil([&] { return IsWindowVisible(Control(id)) != FALSE; }));
  }
};
