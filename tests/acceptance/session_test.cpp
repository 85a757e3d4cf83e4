#include <doctest.h>

#include <windows.h>

#include <dlgs.h>
#include <prsht.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "acceptance/driver.h"
#include "resource.h"
#include "support/text.h"

using support::ReadBytes;
using support::Reply;
using support::Utf8;
using Fields = std::vector<std::wstring>;

namespace {

const std::map<std::wstring, int> kControls{
    {L"message", IDC_MESSAGE},   {L"note", IDC_NOTE},   {L"start-up check", IDC_CHECK_ON_STARTUP},
    {L"install", IDC_INSTALL},   {L"retry", IDC_RETRY}, {L"hide errors", IDC_HIDE_NETWORK_ERRORS},
    {L"continue", IDC_CONTINUE}, {L"ok", IDOK},         {L"cancel", IDCANCEL},
    {L"help", IDHELP},           {L"yes", IDYES},       {L"no", IDNO}};
const std::map<std::wstring, BYTE> kKeys{{L"Alt", VK_MENU},     {L"Space", VK_SPACE},   {L"Up", VK_UP},
                                         {L"Enter", VK_RETURN}, {L"Escape", VK_ESCAPE}, {L"F1", VK_F1},
                                         {L"F4", VK_F4}};

const std::map<std::wstring, bool> kYes{{L"yes", true}, {L"no", false}};

/// Where Wine looks how to find libraries of the utility.
constexpr wchar_t kLibraryRules[] = L"Software\\Wine\\AppDefaults\\QRTTavrelUtility.exe\\DllOverrides";

/// The text of a field, where '|' ends a line; for "much" more than a log has.
std::string Text(const std::wstring& field, const char* line_end = "\n") {
  if (field == L"much") return std::string(9999, 'x');
  return std::regex_replace(Utf8(field), std::regex("\\|"), line_end);
}

constexpr char kFirstRule[] = "=========== Registered Data Entries Check : Start";

int Count(std::string_view text, std::string_view part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++count;
  return count;
}

/// Whether the screen shows more than one colour along a line where the control's text begins.
bool IsPainted(HWND control) {
  RECT area{};
  GetWindowRect(control, &area);
  const HDC screen = GetDC(nullptr);
  std::set<COLORREF> colors;
  for (LONG x = area.left + 4; x < area.right - 5; ++x) colors.insert(GetPixel(screen, x, area.top + 8));
  ReleaseDC(nullptr, screen);
  return colors.size() > 1;
}

/// One session of a user. Each step checks what it has to find.
struct Session {
  InstalledMachine machine;
  support::HttpReply reply = Reply(200, kOnePack);
  support::HttpServer server{[this] { return reply; }};
  std::deque<Run> products;
  std::optional<Run> run;
  HWND save_dialog = nullptr;
  std::string page, log_file;  ///< texts of the log page and the log file when they were looked at last
  std::optional<support::ShareLock> lock;

  Session() { RegDeleteTreeW(HKEY_CURRENT_USER, kLibraryRules); }
  HWND Control(const std::wstring& name) const { return run->Control(kControls.at(name)); }
  void ShowPage(WPARAM index) const { Ask(run->Sheet(), PSM_SETCURSEL, index); }

  void Answer(HWND box, const std::wstring& how) const {
    if (kKeys.contains(how)) {
      ::Press({kKeys.at(how)});
    } else {
      PostMessageW(GetDlgItem(box, kControls.at(how)), BM_CLICK, 0, 0);
    }
    CHECK(WaitUntil([box] { return !IsWindowVisible(box); }));
  }

  // The steps; the table of sessions explains them.
  void Server(const Fields& f) {
    server.Stop();
    if (f[1] == L"down") return;
    reply = Reply(std::stoi(f[1]), kOnePack);
    reply.pause_ms = std::stoul(f[2]);
    server.Start();
  }
  void Fact(const Fields& f) {
    const std::wstring key = support::UninstallKey(support::Layout::two);
    support::SetRegistryText(key, f[1].c_str(), f[2]);
    if (f[2].empty()) support::RemoveRegistryValue(key, f[1].c_str());
  }
  void Write(const Fields& f) {
    const std::wstring path = machine.File(f[1]);
    // The utility keeps the settings file open for a moment after it has written it.
    WaitUntil([&] { return std::ofstream(std::filesystem::path(path), std::ios::app).is_open(); });
    support::WriteBytes(path, Text(f[2], "\r\n"));
  }
  void Lock(const Fields& f) { lock.emplace(machine.File(f[1]), FILE_SHARE_READ); }
  void Launch(const Fields& f) {
    const std::wstring program = machine.File(f[1]);
    if (!ReadBytes(program)) support::CopyOver(machine.ProductFolder() + L"\\Qrt.exe", program);
    REQUIRE(products.emplace_back(program).Idle());
  }
  void Plant(const Fields& f) {
    constexpr wchar_t kRule[] = L"native,builtin";  // files before Wine's own
    for (const std::wstring& name : support::Split(f[1])) {
      RegSetKeyValueW(HKEY_CURRENT_USER, kLibraryRules, name.c_str(), REG_SZ, kRule, sizeof kRule);
      support::WriteBytes(machine.ProgramFolder() + L"\\" + name + L".dll", "none");
    }
  }
  void Begin(const Fields& f) {
    page.clear();
    run.reset();
    run.emplace(machine.program, f[1]);
  }
  void Answered(const Fields&) { REQUIRE(run->Answered()); }
  void Ended(const Fields&) { CHECK(run->End() == "exit code 0"); }
  void Start(const Fields& f) { Begin(f), Answered(f); }
  void Press(const Fields& f) { PostMessageW(Control(f[1]), BM_CLICK, 0, 0); }
  void Command(const Fields& f) {
    Ask(GetParent(Control(f[1])), WM_COMMAND, MAKEWPARAM(kControls.at(f[1]), BN_CLICKED));
  }
  void Keys(const Fields& f) {
    std::vector<BYTE> keys;
    for (const std::wstring& name : support::Split(f[1])) keys.push_back(kKeys.at(name));
    ::Press(keys);
  }
  void Box(const Fields& f) {
    const HWND box = run->Dialog(save_dialog);
    const std::string title = WindowText(box);
    std::string text = title == "Varnexa 15.0 Tavrel Utility" ? "" : title + "\n";
    // The icon, which has no text, and the text.
    for (const HWND part : WindowsOfClass(box, L"Static")) text += WindowText(part);
    CHECK(text == Text(f[1]));
    Answer(box, f[2]);
  }
  void Save(const Fields& f) {
    ShowPage(1);
    PostMessageW(run->Control(IDC_SAVE_LOG), BM_CLICK, 0, 0);
    save_dialog = run->Dialog(nullptr);
    if (f[2] == L"cancel") return Answer(save_dialog, f[2]);
    const std::wstring path = machine.File(f[1]);
    const HWND name = GetDlgItem(save_dialog, cmb13);
    Ask(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageW(GetDlgItem(save_dialog, IDOK), BM_CLICK, 0, 0);
    if (!f[2].empty()) Answer(run->Dialog(save_dialog), f[2]);
  }
  void Page(const Fields& f) {
    const std::string message = WindowText(Control(L"message"));
    CHECK_MESSAGE(Count(message, Text(f[1])) == 1, message);
    CHECK(WindowText(Control(L"note")) ==
          "Note: You can also check the patch availability at "
          "\"Start Menu -> All Programs -> Varnexa -> Varnexa 15.0 Update\"");
    REQUIRE((f[2].empty() || kControls.contains(f[2])));
    for (const wchar_t* name : {L"install", L"retry", L"continue"}) {
      CHECK((IsWindowEnabled(Control(name)) != FALSE) == (f[2] == name));
    }
    CHECK((IsWindowVisible(Control(L"continue")) != FALSE) == (f[2] == L"continue"));
    CHECK_FALSE(IsWindowVisible(Control(L"hide errors")));
  }
  void Painted(const Fields& f) {
    // The screen shows a drawing a moment later, but long before a slow server answers.
    const HWND control = Control(f[1]);
    CHECK(WaitUntil([&] { return IsPainted(control) == kYes.at(f[2]); }, reply.pause_ms / 2));
  }
  void Log(const Fields& f) {
    ShowPage(1);
    page = WindowText(run->Control(IDC_LOG_TEXT));
    CHECK(WindowText(run->Control(IDC_LOG_FILE)) == Utf8(machine.LogFile()));
    ShowPage(0);
    CHECK_MESSAGE(Count(page, Text(f[2])) == std::stoi(f[1]), page);
  }
  void Place(const Fields&) {
    ShowPage(1);
    const HWND log = run->Control(IDC_LOG_TEXT);
    Ask(log, EM_SETSEL, 3, 40);
    for (const int lines : {-999, 4}) Ask(log, EM_LINESCROLL, 0, lines);
    ShowPage(0);
    ShowPage(1);
    CHECK(Ask(log, EM_GETSEL) == MAKELONG(3, 40));
    CHECK(Ask(log, EM_GETFIRSTVISIBLELINE) == 4);
  }
  void LogFile(const Fields& f) {
    const std::string log = machine.Log();
    REQUIRE(log.starts_with(log_file));
    const std::string added = log.substr(log_file.size());
    // The file has the settings' lines between the header and the first check.
    const std::string checks = page.substr(std::min(page.find(kFirstRule), page.size()));
    CHECK_MESSAGE(log.ends_with(std::regex_replace(checks, std::regex("\n\n?"), "\r\n")), log);
    CHECK(Count(added, "\r\n") == std::stoi(f[1]));
    CHECK(Count(added, Text(f[2], "\r\n")) == 1);
    log_file = log;
  }
  void File(const Fields& f) {
    std::string wanted = Text(f[2], "\r\n");
    if (wanted == "log page") wanted = std::regex_replace(page, std::regex("\n"), "\r\n");
    const auto there = [&] { return ReadBytes(machine.File(f[1])).value_or("none"); };
    WaitUntil([&] { return there() == wanted; });
    CHECK(there() == wanted);
  }
  void Running(const Fields& f) {
    std::string running;
    for (const Run& product : products) running += product.Runs() ? "yes|" : "no|";
    CHECK(running == Utf8(f[1] + L"|"));
  }
  void Connected(const Fields& f) {
    CHECK(WaitUntil([&] { return server.Connections() == std::stoul(f[1]); }));
  }
};

using S = Session;
/// A step and the number of columns of its rows.
struct Step {
  void (S::*run)(const Fields&);
  std::size_t columns;
};
const std::map<std::wstring, Step> kSteps{{L"server", {&S::Server, 3}},      {L"fact", {&S::Fact, 3}},
                                          {L"write", {&S::Write, 3}},        {L"lock", {&S::Lock, 2}},
                                          {L"plant", {&S::Plant, 2}},        {L"launch", {&S::Launch, 2}},
                                          {L"begin", {&S::Begin, 2}},        {L"start", {&S::Start, 2}},
                                          {L"answered", {&S::Answered, 1}},  {L"ended", {&S::Ended, 1}},
                                          {L"press", {&S::Press, 2}},        {L"command", {&S::Command, 2}},
                                          {L"keys", {&S::Keys, 2}},          {L"box", {&S::Box, 3}},
                                          {L"save", {&S::Save, 3}},          {L"page", {&S::Page, 3}},
                                          {L"painted", {&S::Painted, 3}},    {L"log", {&S::Log, 3}},
                                          {L"place", {&S::Place, 1}},        {L"log file", {&S::LogFile, 3}},
                                          {L"file", {&S::File, 3}},          {L"running", {&S::Running, 2}},
                                          {L"connected", {&S::Connected, 2}}};

}  // namespace

TEST_CASE("the program does what each step of a session expects") {
  const auto rows = support::Rows("acceptance/sessions.txt", 1, 3);
  for (auto row = rows.begin(); row != rows.end();) {
    const auto is_heading = [](const Fields& fields) { return fields[0] == L"session"; };
    const auto end = std::find_if(row + 1, rows.end(), is_heading);
    SUBCASE(Utf8(row->at(1)).c_str()) {
      Session session;
      while (++row != end) {
        INFO(Utf8(row->at(0)), "; ", Utf8(row->back()));
        const Step& step = kSteps.at(row->at(0));
        REQUIRE(row->size() == step.columns);
        (session.*step.run)(*row);
      }
    }
    row = end;
  }
}
