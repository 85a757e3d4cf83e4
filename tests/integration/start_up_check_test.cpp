#include <doctest.h>

#include <windows.h>

#include <wininet.h>

#include "expected.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "update/check_patch.h"
#include "update/process_state.h"

using support::HttpServer;
using support::Layout;
using support::Machine;

namespace {

/// A run whose process has made no check yet.
struct Run : RunState {
  std::wstring warnings;

  Run() {
    g_nUpdateCheckCount = 0;
    g_bUpdatesAvailable = g_bCheckFailed = true;
    g_strPatchErrorText = L"old";
    WarnUser = [this](std::wstring_view text) { warnings += text; };
  }
};

}  // namespace

TEST_CASE("start-up check: steps out of order, no retry line, or the executable read again") {
  for (const Layout layout : {Layout::one, Layout::two}) {
    Machine machine;
    machine.Install(layout, machine.DefaultProduct());
    machine.PlaceExecutable(L"15.0.2.5");
    HttpServer server(support::Reply(200, expected::kListWithPack));
    Run run;
    const std::wstring check =
        std::wstring(layout == Layout::one ? L"START|MODE ONE|" : L"START|MODE TWO|") + expected::kReadTags +
        L"|END|UPDATES|MATCHED|FOUND|FETCHED|Update details found. Exit code 3.|UPDATES END";
    const CCheckPatch first(run);
    CHECK_LOG(run.LogText(), check);
    CHECK_LOG(first.MessageText() + L"\n\n", check);
    CHECK(first.ProductFileVersion == L"15.0.2.5");
    CHECK(
        (first.m_bUpdatesAvailable && g_bUpdatesAvailable && !g_bCheckFailed && g_strPatchErrorText.empty()));
    const CCheckPatch second(run);
    CHECK_LOG(run.LogText(), check + L"|RETRY|" + check);
    CHECK(second.ProductFileVersion.empty());
    CHECK(g_nUpdateCheckCount == 2);
    CHECK(run.warnings.empty());
  }
}

TEST_CASE("start-up check: half a product asks the server, or says nothing to the user") {
  for (const wchar_t* missing : {L"DisplayVersion", L"DisplayIcon", L"URLUpdateInfo"}) {
    Machine machine;
    machine.Install(Layout::two, machine.DefaultProduct());
    support::RemoveRegistryValue(support::UninstallKey(Layout::two), missing);
    HttpServer server(support::Reply(200, expected::kListWithPack));
    Run run;
    const CCheckPatch check(run);
    server.Stop();
    CHECK(
        support::Utf8(run.warnings) ==
        "Could not check patch update availability.WARNING: 101\n"
        "Please click To Start Menu / All Programs / Varnexa / Varnexa 15.0 Update to check patch updates.");
    CHECK(server.Connections() == 0);
    CHECK_FALSE((check.m_bUpdatesAvailable || check.m_bCheckFailed || g_bUpdatesAvailable));
    CHECK(g_nUpdateCheckCount == 1);
    CHECK_LOG(
        run.LogText().substr(run.LogText().rfind(L"=========== Check Product Updates Availability : Start")),
        L"UPDATES|UPDATES END");
  }
}

TEST_CASE("start-up check: product found in the other branch half-way, or its version put into no header") {
  Machine machine;
  machine.Install(Layout::two, machine.DefaultProduct());
  support::MakeRegistryKey(L"SOFTWARE\\Wow6432Node");
  machine.PlaceExecutable(L"15.0.2.7");
  HttpServer server(support::Reply(200, expected::kListWithPack));
  Run run;
  run.WriteRunHeader();
  const CCheckPatch check(run);
  CHECK(check.TagTwo == machine.ProductFolder() + L"\\Qrt.exe");
  CHECK(check.GetInstallPath() == machine.ProductFolder());
  CHECK(run.LogText().find(L"Build Version : 15.0.2.7\n\n") != std::wstring::npos);
  CHECK_FALSE((check.m_bUpdatesAvailable || check.m_bCheckFailed || check.m_bNetworkError));
}

TEST_CASE("start-up check: settings not honoured, or a hidden network failure not told from another") {
  const struct {
    const char* lines;
    DWORD error;
    bool ignore;
    bool network_error;
  } cases[] = {{"IGNORE_PATCH_ERROR=TRUE\r\n", 12002, true, true},
               {"IGNORE_PATCH_ERROR=FALSE\r\n", 12002, false, true},
               {"IGNORE_PATCH_ERROR=TRUE\r\n", 12152, true, false}};
  for (const auto& c : cases) {
    Machine machine;
    machine.Install(Layout::one, machine.DefaultProduct());
    machine.WriteSettings(c.lines);
    HttpServer server(support::Reply(200, ""));
    Run run;
    run.ResolveSettingsFile();
    const support::ImportHook<HttpSendRequestW> hook("HttpSendRequestW", c.error);
    const CCheckPatch check(run);
    CHECK((check.m_bCheckFailed && g_bCheckFailed));
    CHECK(check.IgnorePatchError == c.ignore);
    CHECK(check.m_bNetworkError == c.network_error);
    CHECK(g_strPatchErrorText == L" Error : " + std::to_wstring(c.error));
  }
}
