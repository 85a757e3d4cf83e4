#pragma once

#include <doctest.h>

#include <windows.h>

#include <dlgs.h>
#include <prsht.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <set>

#include "acceptance/driver.h"
#include "product/identity.h"
#include "resource.h"
#include "ui/ui_texts.h"

/// Where Wine looks how to find libraries of the utility.
inline constexpr wchar_t kLibraryRules[] = L"Software\\Wine\\AppDefaults\\QRTTavrelUtility.exe\\DllOverrides";

inline int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++count;
  return count;
}

/// Whether the screen shows more than one colour along a line where the control's text begins.
inline bool IsPainted(HWND control) {
  RECT area{};
  GetWindowRect(control, &area);
  const HDC screen = GetDC(nullptr);
  std::set<COLORREF> colors;
  for (LONG x = area.left + 4; x < area.right - 5; ++x) colors.insert(GetPixel(screen, x, area.top + 8));
  ReleaseDC(nullptr, screen);
  return colors.size() > 1;
}

inline void Close(HWND box, int button) {
  PostMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
  CHECK(WaitUntil([box] { return !IsWindowVisible(box); }));
}

/// A user, the utility and a server that offers one pack (15.0.2.7) to a product at 15.0.2.5.
struct Session {
  InstalledMachine machine;
  support::HttpReply reply = support::Reply(200, kOnePack);
  support::HttpServer server{[this] { return reply; }};
  std::size_t requests = 0;  ///< how many the server had when they were counted last
  std::deque<Run> products;
  std::optional<Run> run;
  HWND save_dialog = nullptr;
  std::string page, log_file;  ///< texts of the log page and the log file when they were looked at last

  Session() { RegDeleteTreeW(HKEY_CURRENT_USER, kLibraryRules); }
  HWND Control(int id) const { return run->Control(id); }
  void ShowPage(WPARAM index) const { Ask(run->Sheet(), PSM_SETCURSEL, index); }

  // --- Before a run.

  /// The server answers the next requests with `status` and a list of one pack.
  void Serve(int status, unsigned pause_ms = 0) {
    server.Stop();
    reply = support::Reply(status, kOnePack);
    reply.pause_ms = pause_ms;
    server.Start();
  }
  void RegisterIcon(const std::wstring& path) {
    support::SetRegistryText(support::UninstallKey(support::Layout::two), L"DisplayIcon", path);
  }
  void Settings(const std::string& lines) {
    const std::filesystem::path path = machine.SettingsFile();
    // The utility keeps the settings file open for a moment after it has written it.
    WaitUntil([&] { return std::ofstream(path, std::ios::app).is_open(); });
    machine.WriteSettings(lines);
  }
  /// Starts the product, or a copy of it under this name.
  void Launch(const std::wstring& name) {
    const std::wstring program = machine.File(name);
    if (!support::ReadBytes(program)) support::CopyOver(machine.ProductFolder() + L"\\Qrt.exe", program);
    REQUIRE(products.emplace_back(program).Idle());
  }

  // --- What the user does.

  /// Starts the utility and ends one that still runs.
  void Begin(const wchar_t* arguments = L"") {
    page.clear();
    run.reset();
    requests = server.Requests().size();
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
    REQUIRE(WaitUntil([&] { return server.Requests().size() > requests; }));
    requests = server.Requests().size();
  }
  void Ended() { CHECK(run->End() == "exit code 0"); }
  void Click(int id) { PostMessageW(Control(id), BM_CLICK, 0, 0); }
  /// As a click, whether or not the control is enabled.
  void Command(int id) { Ask(GetParent(Control(id)), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED)); }
  void SaveAs(const wchar_t* name) {
    ShowPage(1);
    Click(IDC_SAVE_LOG);
    save_dialog = run->Dialog(nullptr);
    const std::wstring path = machine.File(name);
    Ask(GetDlgItem(save_dialog, cmb13), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageW(GetDlgItem(save_dialog, IDOK), BM_CLICK, 0, 0);
  }

  // --- What has to be seen.

  /// A box with this text; it stays open.
  HWND Box(std::wstring_view text, std::wstring_view title = identity::kWindowTitle) {
    const HWND box = run->Dialog(save_dialog);
    std::string seen;
    // The icon, which has no text, and the text.
    for (const HWND part : WindowsOfClass(box, L"Static")) seen += WindowText(part);
    CHECK(seen == support::Utf8(text));
    CHECK(WindowText(box) == support::Utf8(title));
    return box;
  }
  /// The page shows `text` and the note, and of its buttons this one alone is enabled; 0: none.
  void Page(std::string_view text, int enabled) {
    const std::string message = WindowText(Control(IDC_MESSAGE));
    CHECK_MESSAGE(Count(message, text) == 1, message);
    CHECK(WindowText(Control(IDC_NOTE)) == support::Utf8(ui_texts::kNote));
    for (const int id : {IDC_INSTALL, IDC_RETRY, IDC_CONTINUE}) {
      CHECK((IsWindowEnabled(Control(id)) != FALSE) == (id == enabled));
    }
    CHECK((IsWindowVisible(Control(IDC_CONTINUE)) != FALSE) == (enabled == IDC_CONTINUE));
    CHECK_FALSE(IsWindowVisible(Control(IDC_HIDE_NETWORK_ERRORS)));
  }
  /// Whether the control's text is on the screen while the utility is blocked.
  void Painted(int id, bool painted) {
    // The screen shows a drawing a moment later, but long before a slow server answers.
    const HWND control = Control(id);
    CHECK(WaitUntil([&] { return IsPainted(control) == painted; }, reply.pause_ms / 2));
  }
  /// The log page has `text` so many times, and shows where the log file is.
  void Logged(std::string_view text, int times = 1) {
    ShowPage(1);
    page = WindowText(Control(IDC_LOG_TEXT));
    CHECK(WindowText(Control(IDC_LOG_FILE)) == support::Utf8(machine.LogFile()));
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
  void File(const wchar_t* name, const std::string& text) {
    const auto there = [&] { return support::ReadBytes(machine.File(name)).value_or("none"); };
    WaitUntil([&] { return there() == text; });
    CHECK(there() == text);
  }
  void SettingsAre(const std::string& lines) { File(L"korsa.ini", "[KORSA_URL]\r\n" + lines); }
  void Shown(int id) {
    CHECK(WaitUntil([&] { return IsWindowVisible(Control(id)) != FALSE; }));
  }
};
