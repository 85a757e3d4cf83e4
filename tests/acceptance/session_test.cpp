#include <doctest.h>

#include <windows.h>

#include <dlgs.h>
#include <prsht.h>

#include <deque>
#include <optional>
#include <regex>
#include <set>

#include "acceptance/driver.h"
#include "app/about_texts.h"
#include "product/identity.h"
#include "ui/ui_texts.h"
#include "update/update_texts.h"

using support::Utf8;

namespace {

constexpr char kFound[] = "Update details found. Exit code 3.";
constexpr char kRetry[] = "Product Updates Retry Attempted...";
/// Where Wine looks how to find libraries of the utility.
constexpr wchar_t kLibraryRules[] = L"Software\\Wine\\AppDefaults\\QRTTavrelUtility.exe\\DllOverrides";

int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++count;
  return count;
}

/// Presses keys one after the other and releases them in the reverse order, as a keyboard does.
void Press(const std::vector<BYTE>& keys) {
  for (auto key = keys.begin(); key != keys.end(); ++key) keybd_event(*key, 0, 0, 0);
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}

void Close(HWND box, int button) {
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

}  // namespace

TEST_CASE_FIXTURE(Session, "the argument \"2\" alone asks for the start-up check") {
  machine.WriteSettings("CHECKUPDATES= false \r\n");
  for (const wchar_t* arguments : {L"2", L"-2", L"other.txt \"/2\" /more"}) {
    Begin(arguments);
    Ended();
  }
  CHECK(machine.Log().empty());
  for (const wchar_t* arguments : {L"22", L"--2"}) {
    Start(arguments);
    Ask(run->Sheet(), PSM_PRESSBUTTON, PSBTN_CANCEL);  // sent, as another program can
    Ended();
  }
}

TEST_CASE_FIXTURE(Session, "a run logs what the log page shows, and the page keeps its place") {
  Start();
  Logged(kFound);
  ShowPage(1);
  const HWND log = Control(IDC_LOG_TEXT);
  CHECK(Ask(log, EM_GETFIRSTVISIBLELINE) > 0);  // the end, where the result is
  Ask(log, EM_SETSEL, 3, 40);
  for (const int lines : {-999, 4}) Ask(log, EM_LINESCROLL, 0, lines);
  ShowPage(0);
  ShowPage(1);
  CHECK(Ask(log, EM_GETSEL) == MAKELONG(3, 40));
  CHECK(Ask(log, EM_GETFIRSTVISIBLELINE) == 4);
  Click(IDOK);
  Ended();
  LogFile("Invoke Mode: Regular.");
}

TEST_CASE_FIXTURE(Session, "the log names a missing fact before the start-up check's warning is closed") {
  support::RemoveRegistryValue(support::UninstallKey(support::Layout::two), L"DisplayVersion");
  Begin(L"/2");
  const HWND box = Box(update_texts::kMissingFacts);
  LogFile("Registered data entries check, Reading tag one query failed.");
  Close(box, IDOK);
  Ended();
  CHECK(Count(machine.Log(), "Check Product Updates Availability : End") == 1);
}

TEST_CASE_FIXTURE(Session, "a start-up check without a window loads no library that windows need") {
  Serve(404, 500);
  machine.WriteSettings("IGNORE_PATCH_ERROR=TRUE\r\n");
  Begin(L"2");
  Blocked();
  CHECK(run->Has(L"wininet.dll"));
  for (const wchar_t* name : {L"comctl32.dll", L"comdlg32.dll", L"ole32.dll", L"oleacc.dll", L"uxtheme.dll"})
    CHECK_MESSAGE(!run->Has(name), Utf8(name));
  Ended();
}

TEST_CASE_FIXTURE(Session, "the utility loads no library from its own folder") {
  for (const wchar_t* name : {L"comctl32", L"comdlg32", L"ole32", L"oleacc", L"uxtheme", L"wininet"}) {
    constexpr wchar_t kRule[] = L"native,builtin";  // files before Wine's own
    RegSetKeyValueW(HKEY_CURRENT_USER, kLibraryRules, name, REG_SZ, kRule, sizeof kRule);
    support::WriteBytes(machine.ProgramFolder() + L"\\" + name + L".dll", "none");
  }
  Start();
  Page("patch updates are available", IDC_INSTALL);
  Logged("File Version : " TAVREL_FILE_VERSION);
  SaveAs(L"log");
  Close(Box(ui_texts::kLogSaved), IDOK);
}

TEST_CASE_FIXTURE(Session, "during a check no old result is painted; only Escape and Alt+F4 count") {
  Serve(404, 2000);
  Begin();
  Blocked();
  Painted(IDC_MESSAGE, false);
  Painted(IDC_NOTE, true);
  Answered();
  Painted(IDC_MESSAGE, true);
  Page("\n Error : 404", IDC_RETRY);
  Serve(200, 2000);
  Click(IDC_RETRY);
  Blocked();
  Painted(IDC_MESSAGE, false);
  Press({VK_SPACE});
  Press({VK_RETURN});
  RECT button{};
  GetWindowRect(Control(IDC_INSTALL), &button);
  SetCursorPos(button.left + 9, button.top + 9);
  for (const DWORD event : {DWORD{MOUSEEVENTF_LEFTDOWN}, DWORD{MOUSEEVENTF_LEFTUP}})
    mouse_event(event, 0, 0, 0, 0);
  Answered();
  Page("patch updates are available", IDC_INSTALL);
  Logged(" Error : 404");
  Logged(kRetry);
  LogFile(" Error : 404");
  Press({VK_ESCAPE});
  Ended();
  for (const auto& closing : {std::vector<BYTE>{VK_ESCAPE}, {VK_MENU, VK_F4}}) {
    Begin();
    Blocked();
    Press({VK_SPACE});
    Press(closing);
    Ended();
  }
}

TEST_CASE_FIXTURE(Session, "keys change the page and open the about box; Help closes the window") {
  Start();
  Press({VK_CONTROL, VK_TAB});
  Shown(IDC_LOG_TEXT);
  Press({VK_CONTROL, VK_PRIOR});
  Shown(IDC_MESSAGE);
  Press({VK_CONTROL, VK_NEXT});
  Shown(IDC_LOG_TEXT);
  Press({VK_F1});
  Press({VK_MENU, VK_SPACE});
  Press({VK_UP});
  Press({VK_RETURN});
  Close(Box(L"Varnexa Tavrel Utility Version : 2.0\nBuild: " TAVREL_FILE_VERSION L"\n\n" TAVREL_COPYRIGHT,
            about_texts::kTitle),
        IDOK);
  Click(IDHELP);
  Ended();
}

TEST_CASE_FIXTURE(Session, "an update that cannot start says and logs why, also at log-off") {
  RegisterIcon(L"Qrt.exe");
  Start();
  Click(IDC_INSTALL);
  const std::wstring no_path = std::wstring(ui_texts::kPathNotFound) + L"\n\n";
  Close(Box(no_path), IDOK);
  Logged("End ============\n\n" + Utf8(ui_texts::kPathNotFound) + "\n\n");
  Ask(run->Sheet(), PSM_PRESSBUTTON, PSBTN_CANCEL);
  Ended();
  LogFile("The patch application path not found.");
  const std::wstring gone = machine.ProductFolder() + L"\\Gone.exe";
  RegisterIcon(gone);
  Start();
  Click(IDC_INSTALL);
  Box(ui_texts::kFileNotFound + gone + L"\n\n");
  Ask(run->Sheet(), WM_QUERYENDSESSION);
  Ask(run->Sheet(), WM_ENDSESSION, TRUE);
  LogFile("The patch application file not found.");
}

TEST_CASE_FIXTURE(Session, "only a Yes ends the product and starts the update; a folder keeps the name") {
  std::deque<Run> products;
  support::CopyOver(machine.ProductFolder() + L"\\Qrt.exe", machine.File(L"QRT.EXE"));
  for (const wchar_t* name : {L"product\\Qrt.exe", L"product\\Qrt.exe", L"QRT.EXE"})
    REQUIRE(products.emplace_back(machine.File(name)).Idle());
  Start();
  Press({VK_RETURN});
  const HWND question = Box(ui_texts::kCloseProduct);
  Press({VK_RETURN});
  CHECK(WaitUntil([question] { return !IsWindowVisible(question); }));
  Answered();
  CHECK((products[0].Runs() && products[1].Runs() && products[2].Runs()));
  RegisterIcon(machine.ProductFolder() + L"\\");
  Command(IDC_RETRY);
  Click(IDC_INSTALL);
  Close(Box(ui_texts::kCloseProduct), IDYES);
  Ended();
  CHECK((!products[0].Runs() && !products[1].Runs() && products[2].Runs()));
  File(machine.ProductFolder() + L"\\qrt-arguments.txt",
       "/update\r\n" + Utf8(machine.ProductFolder()) + "\r\n");
}

TEST_CASE_FIXTURE(Session, "of start-up checks the log page has the last retry, the log file every one") {
  Start(L"/2");
  Logged(kFound);
  Logged("Invoke Mode: Regular.", 0);
  Serve(404);
  Command(IDC_RETRY);
  Page("application is not installed", 0);
  Logged(" Error : 404");
  Serve(200);
  Command(IDC_RETRY);
  Page("application is not installed", IDC_CONTINUE);
  Logged(kRetry);
  LogFile("Invoke Mode: Patch verfication.");
  CHECK(Count(log_file, " Error : 404\r\n") == 1);
  Click(IDC_CONTINUE);
  Ended();
}

TEST_CASE_FIXTURE(Session, "the options are read, and written by a click") {
  machine.WriteSettings("CHECKUPDATES=false\r\nIGNORE_PATCH_ERROR=true\r\n");
  Start();
  File(machine.SettingsFile(), "[KORSA_URL]\r\nCHECKUPDATES=false\r\nIGNORE_PATCH_ERROR=true\r\n");
  Click(IDC_CHECK_ON_STARTUP);
  Click(IDC_HIDE_NETWORK_ERRORS);
  File(machine.SettingsFile(), "[KORSA_URL]\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n");
}

TEST_CASE_FIXTURE(Session, "the log is saved where the user says, and only a Yes replaces a file") {
  support::WriteBytes(machine.File(L"have.txt"), std::string(9999, 'x'));  // more than a log has
  Start();
  Logged(kFound);
  SaveAs(L"log.TXT");
  Close(Box(ui_texts::kBadFileName), IDOK);
  File(machine.File(L"log.txt"), "none");
  SaveAs(L"have");
  Close(run->Dialog(save_dialog), IDYES);
  Close(Box(ui_texts::kLogSaved), IDOK);
  File(machine.File(L"have.txt"), std::regex_replace(page, std::regex("\n"), "\r\n"));
  support::WriteBytes(machine.File(L"have.txt"), "old");
  const support::ShareLock lock(machine.File(L"have.txt"), FILE_SHARE_READ);
  SaveAs(L"have.txt");
  Close(run->Dialog(save_dialog), IDYES);
  Close(Box(ui_texts::kLogNotSaved), IDOK);
  SaveAs(L"have.txt");
  Close(run->Dialog(save_dialog), IDNO);
  Close(save_dialog, IDCANCEL);
  File(machine.File(L"have.txt"), "old");
}
