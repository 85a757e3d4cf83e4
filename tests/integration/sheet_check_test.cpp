#include <doctest.h>

#include "expected.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

using support::HttpServer;
using support::Layout;
using support::Machine;
using support::Reply;

namespace {

/// A sheet's check in a process that has made no other; the mirrors of that other must stay as they are.
struct Sheet {
  RunState run;
  SheetUpdateCheck check{run};

  Sheet() {
    g_nUpdateCheckCount = 0;
    g_bProductInstalled = false;
    g_bUpdatesAvailable = g_bCheckFailed = true;
    g_strPatchErrorText = L"start-up's";
    run.WarnUser = [](std::wstring_view) { FAIL("the interactive check shows no message"); };
  }
  ~Sheet() { CHECK((g_bUpdatesAvailable && g_bCheckFailed && g_strPatchErrorText == L"start-up's")); }
  /// Runs a check and gives the entries that it added.
  std::wstring Check() {
    check.ClearSheetLog();
    check.RunUpdateCheck();
    return check.SheetLogText();
  }
};

}  // namespace

TEST_CASE("interactive check: texts, agent or results of the other check, or no retry line") {
  Machine machine;
  machine.Install(Layout::one, machine.DefaultProduct());
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings("IGNORE_PATCH_ERROR=maybe\r\n");
  const auto settings = support::ReadBytes(machine.SettingsFile());
  support::WriteBytes(machine.Record(), "Varnexa15_0_2_7");
  HttpServer server(Reply(200, expected::kListWithPack));
  Sheet sheet;
  sheet.run.ResolveSettingsFile();
  const std::wstring start = std::wstring(L"START|MODE ONE|@version information validated.|") +
                             expected::kReadTags + L"|END|UPDATES|MATCHED|FOUND|FETCHED|";
  CHECK_LOG(sheet.Check(), start +
                               L"Installer update file exists in local machine.|READ|"
                               L"Invalid installer update file; Modified the file with actuals.|"
                               L"Update details found. Exit code 1.|UPDATES END");
  CHECK((sheet.check.SheetUpdatesAvailable && g_bProductInstalled));
  CHECK(sheet.check.SheetTagTwo == machine.ProductFolder() + L"\\Qrt.exe");
  CHECK(sheet.check.SheetCheckCount == 1);
  CHECK(g_nUpdateCheckCount == 0);
  CHECK(support::ReadBytes(machine.SettingsFile()) == settings);
  CHECK_LOG(sheet.Check(), L"RETRY|" + start + L"Update details found. Exit code 3.|UPDATES END");
  CHECK(sheet.check.SheetCheckCount == 2);
  REQUIRE(server.Requests().size() == 2);
  CHECK(server.Requests()[0].Header("User-Agent") == "");
  g_nUpdateCheckCount = 1;
  CHECK(sheet.Check() == L"");
}

TEST_CASE("interactive check: another product's version passes the gate, or an old failure stays") {
  for (const wchar_t* version : {L"15.1", L"15.0 ", L""}) {
    Machine machine;
    machine.Install(Layout::one, machine.DefaultProduct());
    HttpServer server(Reply(404, ""));
    Sheet sheet;
    sheet.Check();
    CHECK((sheet.check.SheetCheckFailed && sheet.check.SheetErrorText == L" Error : 404"));
    sheet.check.SheetUpdatesAvailable = true;
    support::SetRegistryText(support::MakerKey(Layout::one), L"Version", version);
    const std::wstring read = *version != L'\0' ? L"@version information validated."
                                                : L"@version information failed. Value not found. ";
    CHECK_LOG(sheet.Check(), L"RETRY|START|MODE ONE|" + read + L"|@version information not found.|END");
    CHECK_FALSE((g_bProductInstalled || sheet.check.SheetUpdatesAvailable || sheet.check.SheetCheckFailed));
    CHECK((sheet.check.SheetErrorText + sheet.check.SheetTagOne + sheet.check.SheetInstallPath).empty());
    CHECK(sheet.check.SheetCheckCount == 1);
    CHECK(server.Requests().size() == 1);
  }
}

TEST_CASE("interactive check: a missing fact asks the server, or a missing address is no mismatch") {
  const wchar_t* const not_found =
      L"Registered entries for patch availability check not found. WARNING: 101.";
  const struct {
    const wchar_t* value;
    std::wstring log;
    const wchar_t* error_text;
    const wchar_t* build;
  } cases[] = {
      {L"DisplayVersion", not_found, L"", L"15.0.2.5"},
      {L"DisplayIcon", not_found, L"", L"15.0.2.5"},
      {L"Installpath", not_found, L"", L""},
      {L"URLUpdateInfo",
       L"NOT MATCHED|INVALID|MISMATCH|Installer local update file does not exists.|"
       L"Update details not found.Exit code 3.",
       L" Error : Server settings INI information mismatch.", L"NA"},
  };
  for (const auto& c : cases) {
    Machine machine;
    machine.Install(Layout::one, machine.DefaultProduct());
    machine.PlaceExecutable(L"15.0.2.5");
    support::RemoveRegistryValue(support::MakerKey(Layout::one), c.value);
    support::RemoveRegistryValue(support::UninstallKey(Layout::one), c.value);
    HttpServer server(Reply(200, expected::kListWithPack));
    Sheet sheet;
    sheet.check.WriteRegularRunHeader();
    sheet.check.RunUpdateCheck();
    server.Stop();
    const std::wstring& log = sheet.check.SheetLogText();
    CHECK_LOG(log.substr(log.rfind(L"=========== Check Product Updates Availability : Start")),
              L"UPDATES|" + c.log + L"|UPDATES END");
    CHECK(log.find(L"Build Version : " + std::wstring(c.build) + L"\n\n") != std::wstring::npos);
    CHECK(sheet.check.SheetErrorText == c.error_text);
    CHECK(sheet.check.SheetCheckCount == 1);
    CHECK(server.Connections() == 0);
  }
}
