#include <doctest.h>

#include <windows.h>

#include <dlgs.h>
#include <prsht.h>

#include "acceptance/driver.h"
#include "resource.h"
#include "support/text.h"

using support::HttpServer;
using support::Reply;

namespace {

/// What the first page shows.
struct Page {
  std::string text;
  bool install = false;
  bool retry = false;
  bool go_on = false;  ///< "Continue without updates" is shown and enabled
};

const std::string kTried =
    " Varnexa has tried to connect to the update server for the auto-update feature.\n";
const std::string kNotReached =
    kTried +
    " The attempt to connect to the server failed. Please click \"Retry\" button to attempt again.\n";
const Page kOffered{
    " Varnexa 15.0 patch updates are available on our server.Click \"Install Updates\" button "
    "to initiate the update  process. ",
    true};
const Page kNothingNew{" No new patches available on our server."};
const Page kMissing{" Varnexa 15.0 application is not installed in this machine."};
const Page kMissingGoOn{kMissing.text, false, false, true};
const Page kNotCollected{kTried +
                             " Unable to collect the update information from the server.\n"
                             " Please click \"Retry\" button to attempt again.\n Error : 404",
                         false, true};
// The code that stands for a refused connection is the network library's affair: "*".
const Page kDown{kNotReached + " Error : * Please check your network and permissions.", false, true};
const Page kUnknownHost{kNotReached + " Error : 12007", false, true};
const Page kOtherHost{kNotReached + " Error : Server settings INI information mismatch.", false, true};

void CheckPage(const Run& run, const Page& page) {
  const std::string text = run.Text(IDC_MESSAGE);
  const std::size_t star = page.text.find('*');
  CHECK(text.substr(0, star) == page.text.substr(0, star));
  if (star != std::string::npos) CHECK(text.ends_with(page.text.substr(star + 1)));
  CHECK(run.Enabled(IDC_INSTALL) == page.install);
  CHECK(run.Enabled(IDC_RETRY) == page.retry);
  CHECK(run.Enabled(IDC_CONTINUE) == page.go_on);
  CHECK(run.Visible(IDC_CONTINUE) == page.go_on);
  CHECK_FALSE(run.Visible(IDC_HIDE_NETWORK_ERRORS));
  CHECK(run.Text(IDC_NOTE) ==
        "Note: You can also check the patch availability at \"Start Menu -> All Programs "
        "-> Varnexa -> Varnexa 15.0 Update\"");
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

TEST_CASE("a page that tells something else than the check found") {
  struct Case {
    const wchar_t* arguments;
    void (*change)(const Stage&);
    int status;  ///< of the server's answer; 0: the server is down
    const Page& page;
    std::string logged;
  };
  const auto as_it_is = [](const Stage&) {};
  const auto updated = [](const Stage& stage) { stage.PlaceProduct(L"15.0.2.7"); };
  const auto no_host = [](const Stage& stage) {
    stage.WriteSettings("UPDATE_LOC=unknown.example\r\n");
    stage.SetFact(L"URLUpdateInfo", L"http://unknown.example/updates.ini");
  };
  const auto other_host = [](const Stage& stage) { stage.WriteSettings("UPDATE_LOC=other.example\r\n"); };
  const auto version = [](const Stage& stage) { stage.SetFact(L"Version", L"15.0 "); };
  const auto no_icon = [](const Stage& stage) { stage.SetFact(L"DisplayIcon", L""); };
  for (const Case& c :
       {Case{L"", as_it_is, 200, kOffered, "Update details found. Exit code 3."},
        Case{L"", updated, 200, kNothingNew, "Update details not found.Exit code 3."},
        Case{L"", as_it_is, 404, kNotCollected, "Client side request: Information not found. "},
        Case{L"", updated, 500, kNothingNew, "Client side request: Information status code:\n\n500"},
        Case{L"", as_it_is, 0, kDown, "Connect to the server not successful."},
        Case{L"", no_host, 200, kUnknownHost, " Error : 12007"},
        Case{L"", other_host, 200, kOtherHost, "Invalid client tag three information found."},
        Case{L"", version, 200, kMissing, "Registered data entries check, version information not found."},
        Case{L"", no_icon, 200, kNothingNew, "availability check not found. WARNING: 101."},
        Case{L"2", as_it_is, 200, kMissingGoOn, "Update details found. Exit code 3."},
        Case{L"2", as_it_is, 404, kMissing, " Error : 404"}}) {
    INFO(c.logged);
    HttpServer server(Reply(c.status, kOnePack));
    if (c.status == 0) server.Stop();
    const Stage stage;
    c.change(stage);
    const Run run(stage.program, c.arguments);
    REQUIRE(run.Answered());
    CheckPage(run, c.page);
    const std::string log = run.ShowLog();
    CHECK_MESSAGE(Count(log, c.logged + "\n\n") == 1, log);
    CHECK(Count(log, "Invoke Mode: Regular.") == (*c.arguments == L'2' ? 0 : 1));
  }
}

TEST_CASE("a retry that keeps the old answer or leaves its traces out of the log") {
  struct Step {
    const char* list;  ///< null: the server answers 404
    const Page& regular;
    const Page& patch;
    std::string logged;
  };
  for (const bool patch : {false, true}) {
    CAPTURE(patch);
    const Stage stage;
    const char* list = nullptr;
    HttpServer server([&](const support::HttpRequest&) { return Reply(list ? 200 : 404, list ? list : ""); });
    server.Stop();
    const Run run(stage.program, patch ? L"2" : L"");
    REQUIRE(run.Answered());
    int retries = 0;
    for (const Step& step : {Step{"", kDown, kMissing, "Connect to the server not successful."},
                             Step{"[P]\r\n", kNothingNew, kMissing, "Update details not found.Exit code 3."},
                             Step{kOnePack, kOffered, kMissingGoOn, "Update details found. Exit code 3."},
                             Step{nullptr, kNotCollected, kMissing, " Error : 404"}}) {
      INFO(step.logged);
      list = step.list;
      if (retries == 1) server.Start();
      // A person reaches the button only after a failure; the others show what the page would make of it.
      const HWND page = GetParent(run.Control(IDC_RETRY));
      if (retries > 0) Ask(page, WM_COMMAND, MAKEWPARAM(IDC_RETRY, BN_CLICKED));
      CheckPage(run, patch ? step.patch : step.regular);
      const std::string log = run.ShowLog();
      CHECK_MESSAGE(log.find(step.logged, log.rfind(" : Start ===")) != std::string::npos, log);
      // The page of a product's start keeps the last check alone.
      CHECK(Count(log, "Product Updates Retry Attempted...") == (patch && retries > 0 ? 1 : retries));
      CHECK(Count(log, "Check Product Updates Availability : End") == (patch ? 1 : retries + 1));
      Ask(run.Sheet(), PSM_SETCURSEL, 0);
      ++retries;
    }
    CHECK(server.Requests().size() == 3);
  }
}

TEST_CASE("options that are not written, not read back or repaired in another way") {
  struct Case {
    std::string before;
    bool ticked;
    const char* check;
    const char* hide;
  };
  const Stage stage;  // without a server: a check ends at once
  for (const Case& c : {Case{"CHECKUPDATES= true \r\nIGNORE_PATCH_ERROR=false\r\n", true, "true", "false"},
                        Case{"CHECKUPDATES=false\r\nIGNORE_PATCH_ERROR=TRUE\r\n", false, "false", "TRUE"},
                        Case{"CHECKUPDATES=yes\r\nIGNORE_PATCH_ERROR=FALSE\r\n", true, "TRUE", "FALSE"},
                        Case{"CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=maybe\r\n", true, "FALSE", "maybe"},
                        Case{"TIMEOUT=5\r\n", true, "TRUE", "FALSE"}}) {
    INFO(c.before);
    stage.WriteSettings(c.before);
    const Run run(stage.program);
    REQUIRE(run.Answered());
    CHECK(stage.Setting(L"CHECKUPDATES") == c.check);
    for (const bool ticked : {c.ticked, !c.ticked}) {
      const HWND box = run.Control(IDC_CHECK_ON_STARTUP);
      CHECK((Ask(box, BM_GETCHECK) != 0) == ticked);
      run.Press(IDC_CHECK_ON_STARTUP);
      CHECK(WaitUntil([&] { return (Ask(box, BM_GETCHECK) != 0) != ticked; }));
      CHECK(stage.Setting(L"CHECKUPDATES") == (ticked ? "FALSE" : "TRUE"));
    }
    CHECK(stage.Setting(L"IGNORE_PATCH_ERROR") == c.hide);
  }
}

TEST_CASE("a saved log that lands elsewhere, is lost or replaces a file without a question") {
  struct Case {
    std::wstring typed;
    int overwrite;     ///< answer to the question; 0: none is asked
    std::string told;  ///< empty: nothing; the dialog is cancelled
    bool added = false;
    bool replaced = false;
    bool locked = false;
  };
  const std::string saved = "Log file saved successfully.";
  const std::string bad_name = "Please provide the valid file name to save log informations";
  const Stage stage;
  const Run run(stage.program);
  REQUIRE(run.Answered());
  std::string log = run.ShowLog();
  CHECK(run.Text(IDC_LOG_FILE) == support::Utf8(stage.LogFile()));
  for (std::size_t at = 0; (at = log.find('\n', at)) != std::string::npos; at += 2) log.insert(at, 1, '\r');
  const std::wstring have = stage.folder + L"\\have.txt", fresh = stage.folder + L"\\log.txt";
  for (const Case& c :
       {Case{L"", 0, ""}, Case{L"log", 0, saved, true}, Case{L"log.TXT", 0, bad_name},
        Case{L"log.dat", 0, bad_name}, Case{L"have.txt", IDNO, ""}, Case{L"have", IDYES, saved, false, true},
        Case{L"have.txt", IDYES, "Log file could not be saved.", false, false, true}}) {
    INFO(support::Utf8(c.typed));
    DeleteFileW(fresh.c_str());
    support::WriteBytes(have, "old");
    std::optional<support::ShareLock> lock;
    if (c.locked) lock.emplace(have, FILE_SHARE_READ);
    run.Press(IDC_SAVE_LOG);
    const HWND dialog = run.Dialog();
    if (!c.typed.empty()) {
      const std::wstring path = stage.folder + L"\\" + c.typed;
      Ask(Descendant(dialog, cmb13), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
      PostMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
      if (c.overwrite != 0) CHECK(Answer(run.Dialog(dialog), c.overwrite));
    }
    if (!c.told.empty()) {
      const HWND box = run.Dialog(dialog);
      CHECK(BoxText(box) == "Varnexa 15.0 Tavrel Utility|" + c.told);
      CHECK(Answer(box, IDOK));
    } else {
      CHECK(Answer(dialog, IDCANCEL));
    }
    lock.reset();
    CHECK((support::ReadBytes(fresh) == log) == c.added);
    CHECK(support::ReadBytes(have) == (c.replaced ? log : "old"));
    CHECK(support::FileNames(stage.folder).size() == (c.added ? 2 : 1));
  }
}
