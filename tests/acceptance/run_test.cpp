#include <doctest.h>

#include <algorithm>

#include "acceptance/driver.h"
#include "resource.h"
#include "support/text.h"

using support::HttpServer;
using support::ReadBytes;
using support::Reply;
using support::Utf8;

namespace {

const std::string kTitle = "Varnexa 15.0 Tavrel Utility";
const std::string kSeeMenu =
    "Start Menu / All Programs / Varnexa / Varnexa 15.0 Update to check patch updates.";

std::string InFile(std::string sheet_log) {
  for (std::size_t at = 0; (at = sheet_log.find("\n\n", at)) != std::string::npos; at += 2)
    sheet_log[at] = '\r';
  return sheet_log;
}

/// Whether the screen shows one colour only along a line where the control's text begins.
bool IsBlank(HWND control) {
  RECT area{};
  GetWindowRect(control, &area);
  const HDC screen = GetDC(nullptr);
  bool blank = true;
  for (LONG x = area.left + 5; x < area.right - 5; ++x) {
    blank &= GetPixel(screen, x, area.top + 8) == GetPixel(screen, area.left + 4, area.top + 8);
  }
  ReleaseDC(nullptr, screen);
  return blank;
}

}  // namespace

TEST_CASE("a command line that selects the wrong mode") {
  // With the check switched off, patch verification ends at once, and a user's start opens the sheet.
  const Stage stage;
  stage.WriteSettings("CHECKUPDATES= false \r\n");
  for (const wchar_t* arguments : {L"2", L"/2", L"-2", L"other.txt 2 /more", L"\"2\""}) {
    INFO(Utf8(arguments));
    CHECK(Run(stage.program, arguments).Ended());
  }
  CHECK(stage.LogFile().empty());
  for (const wchar_t* arguments : {L"", L"22", L"/2x", L"--2", L"/p two"}) {
    INFO(Utf8(arguments));
    CHECK(Run(stage.program, arguments).Answered());
  }
}

TEST_CASE("a log file that lacks entries, has them twice or is not appended to") {
  const HttpServer server(Reply(200, kOnePack));
  const Stage stage;
  std::string before;
  for (const std::string mode : {"Patch verfication.", "Regular.", "Patch verfication."}) {
    INFO(mode);
    const bool regular = mode == "Regular.";
    const Run run(stage.program, regular ? L"" : L"/2");
    REQUIRE(run.Answered());
    const std::string checked = InFile(run.ShowLog());
    run.Press(regular ? IDOK : IDC_CONTINUE);
    CHECK(run.Ended());
    const std::string log = ReadBytes(stage.LogFile()).value_or("");
    REQUIRE(log.starts_with(before));
    CHECK(log.ends_with(checked));
    // What a product's start logs before its check is not on the page.
    const std::string start = log.substr(before.size(), log.size() - before.size() - checked.size());
    CHECK(std::count(start.begin(), start.end(), '\n') == (regular ? 0 : 7));
    CHECK((start + checked).find("Invoke Mode: " + mode + "\r\n") != std::string::npos);
    before = log;
  }
}

TEST_CASE("missing facts that ask the server, say something else or open the sheet") {
  const HttpServer server(Reply(200, kOnePack));
  for (const wchar_t* fact : {L"DisplayVersion", L"DisplayIcon", L"URLUpdateInfo"}) {
    INFO(Utf8(fact));
    const Stage stage;
    stage.SetFact(fact, L"");
    const Run run(stage.program, L"/2");
    const HWND box = run.Dialog();
    CHECK(BoxText(box) ==
          kTitle + "|Could not check patch update availability.WARNING: 101\nPlease click To " + kSeeMenu);
    CHECK(Answer(box, IDOK));
    CHECK(run.Ended());
  }
  CHECK(server.Connections() == 0);
}

TEST_CASE("a slow server that leaves the user without a window, or with an old answer") {
  support::HttpReply stalled = Reply(404, "");
  stalled.pause_ms = 2000;
  const HttpServer server(stalled);
  const Stage stage;
  const Run run(stage.program);
  for (const std::size_t requests : {1u, 2u}) {
    CAPTURE(requests);
    // The window's thread is inside the exchange now: only what needs no answer of it can be asked.
    REQUIRE(WaitUntil([&] { return server.Requests().size() == requests; }));
    wchar_t text[2];
    CHECK(InternalGetWindowText(run.Control(IDC_MESSAGE), text, 2) == 0);
    CHECK(IsBlank(run.Control(IDC_MESSAGE)));
    CHECK_FALSE(IsBlank(run.Control(IDC_NOTE)));
    CHECK_FALSE(run.Enabled(IDC_RETRY));
    REQUIRE(run.Answered());
    CHECK_FALSE(IsBlank(run.Control(IDC_MESSAGE)));
    run.Press(IDC_RETRY);
  }
}

TEST_CASE("a way out that does not end the program, a box that does") {
  struct Case {
    const wchar_t* arguments;
    int button;
    std::initializer_list<WORD> keys;
  };
  const HttpServer server(Reply(200, kOnePack));
  const Stage stage;
  for (const Case& c :
       {Case{L"", IDOK, {}}, Case{L"2", IDCANCEL, {}}, Case{L"", IDHELP, {}}, Case{L"2", IDC_CONTINUE, {}},
        Case{L"", 0, {VK_ESCAPE}}, Case{L"2", 0, {VK_MENU, VK_F4}}}) {
    CAPTURE(c.button);
    const Run run(stage.program, c.arguments);
    REQUIRE(run.Answered());
    run.Keys({VK_F1});  // asks for help that is not there: nothing comes of it
    run.Keys({VK_MENU, VK_SPACE});
    run.Keys({VK_UP});  // to the system menu's last entry
    run.Keys({VK_RETURN});
    const HWND about = run.Dialog();
    CHECK(BoxText(about) ==
          "Varnexa Tavrel Utility|Varnexa Tavrel Utility Version : 2.0\nBuild: 2.0.3.0\n\nCopyright (C) "
          "NORVIK Software Inc.");
    CHECK(Answer(about, IDOK));
    run.Press(c.button);
    run.Keys(c.keys);
    CHECK(run.Ended());
  }
}

TEST_CASE("an installation that cannot start, yet closes the sheet or says nothing") {
  const HttpServer server(Reply(200, kOnePack));
  const Stage stage;
  const std::wstring gone = stage.folder + L"\\product\\Gone.exe";
  for (const std::wstring& icon : {std::wstring(L"Qrt.exe"), gone}) {
    INFO(Utf8(icon));
    const std::string text = "The patch application " + std::string(icon == gone ? "file" : "path") +
                             " not found.\nPlease click " + kSeeMenu + (icon == gone ? Utf8(gone) : "");
    stage.SetFact(L"DisplayIcon", icon);
    const Run run(stage.program);
    REQUIRE(run.Answered());
    run.Press(IDC_INSTALL);
    const HWND box = run.Dialog();
    CHECK(BoxText(box) == kTitle + "|" + text);
    CHECK(Answer(box, IDOK));
    CHECK(run.Enabled(IDC_INSTALL));
    CHECK(run.ShowLog().ends_with("End ============\n\n" + text + "\n\n"));
  }
}

TEST_CASE("an installation that spares the product, ends something else or starts the update wrongly") {
  const HttpServer server(Reply(200, kOnePack));
  const Stage stage;
  const std::wstring other = stage.folder + L"\\QRT.EXE";
  const std::wstring note = stage.folder + L"\\product\\qrt-arguments.txt";
  CopyFileW(stage.product.c_str(), other.c_str(), FALSE);
  const Run first(stage.product), second(stage.product), upper_case(other);
  // All windows first, so that none takes the keyboard from the sheet later.
  REQUIRE(WaitUntil([&] { return first.ShowsWindow() && second.ShowsWindow() && upper_case.ShowsWindow(); }));
  const Run run(stage.program);
  REQUIRE(run.Answered());

  // The focus is on the next action, but Enter alone never closes the product.
  run.Keys({VK_RETURN});
  CHECK(BoxText(run.Dialog()) ==
        kTitle + "|Varnexa is running! Varnexa will be closed before update. Do you want to continue ? ");
  run.Keys({VK_RETURN});
  CHECK(WaitUntil([&] { return !run.ShowsDialog(); }));
  CHECK(run.Answered());
  CHECK((first.Runs() && second.Runs() && !ReadBytes(note)));

  run.Press(IDC_INSTALL);
  CHECK(Answer(run.Dialog(), IDYES));
  CHECK(run.Ended());
  CHECK_FALSE((first.Runs() || second.Runs()));
  CHECK(upper_case.Runs());
  CHECK(WaitUntil([&] { return ReadBytes(note).has_value(); }));
  CHECK(ReadBytes(note) == "/update\r\n" + Utf8(stage.folder) + "\\product\r\n");
}
