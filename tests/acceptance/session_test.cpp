#include "acceptance/session.h"

#include <deque>

#include "app/about_texts.h"
#include "update/update_texts.h"

namespace {

constexpr char kFound[] = "Update details found. Exit code 3.";
constexpr char kRetry[] = "Product Updates Retry Attempted...";

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
