#include <doctest.h>

#include <windows.h>

#include <wininet.h>

#include <map>

#include "checks.h"

using namespace checks;

namespace {

struct Outcome {
  std::string results;
  std::size_t requests, list_bytes;
};

/// A start-up check whose server gives these answers, the last one again and again.
Outcome CheckWith(std::vector<HttpReply> replies) {
  Process process(false, L"15.0.2.5", "TIMEOUT=2");
  HttpServer server([&] {
    const HttpReply reply = replies.front();
    if (replies.size() > 1) replies.erase(replies.begin());
    return reply;
  });
  const std::string results = process.Check();
  server.Stop();
  return {results, server.Requests().size(), ReadBytes(process.machine.UpdateList()).value_or("").size()};
}

/// What a check asks of WinInet that the server does not see.
struct Asked {
  bool anonymous = false;  ///< the request gives no credentials to the server
  bool stores_cookies = true;
  std::map<DWORD, DWORD> timeouts;  ///< by the type of the handle, in milliseconds
  const ImportHook<InternetSetOptionW> set{
      "InternetSetOptionW", [this](HINTERNET handle, DWORD option, void* value, DWORD bytes) {
        DWORD type = 0, size = sizeof type;
        InternetQueryOptionW(handle, INTERNET_OPTION_HANDLE_TYPE, &type, &size);
        anonymous |=
            option == INTERNET_OPTION_SUPPRESS_SERVER_AUTH && type == INTERNET_HANDLE_TYPE_HTTP_REQUEST;
        // INTERNET_SUPPRESS_COOKIE_PERSIST for the process; Wine ignores it.
        if (option == INTERNET_OPTION_SUPPRESS_BEHAVIOR && handle == nullptr)
          stores_cookies = *static_cast<DWORD*>(value) != 3;
        if (option == INTERNET_OPTION_RECEIVE_TIMEOUT) timeouts[type] = *static_cast<DWORD*>(value);
        return set.original(handle, option, value, bytes);
      }};
};

}  // namespace

TEST_CASE("a check asks with its agent, without a proxy, credentials or stored cookies, and waits as set") {
  const struct {
    bool interactive;
    const char* settings;
    DWORD timeout_ms;
  } rows[] = {{.interactive = false, .settings = "TIMEOUT=1", .timeout_ms = 1000},
              {.interactive = false, .settings = "TIMEOUT=0", .timeout_ms = 60000},
              {.interactive = true, .settings = "", .timeout_ms = 60000}};
  for (const auto& row : rows) {
    CAPTURE(std::string(row.settings));
    Process process(row.interactive, L"15.0.2.5", row.settings);
    // The user's proxy, at which nothing listens.
    constexpr wchar_t internet[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    constexpr wchar_t proxy[] = L"127.0.0.1:9";
    const DWORD enable = 1;
    RegSetKeyValueW(HKEY_CURRENT_USER, internet, L"ProxyEnable", REG_DWORD, &enable, sizeof enable);
    RegSetKeyValueW(HKEY_CURRENT_USER, internet, L"ProxyServer", REG_SZ, proxy, sizeof proxy);
    HttpServer server(List());
    Asked asked;
    CHECK(process.Check() == "offered");
    server.Stop();
    REQUIRE(server.Requests().size() == 1);
    const std::string request = server.Requests()[0];
    const auto has = [&](const char* text) { return request.find(text) != request.npos; };
    CHECK(request.starts_with("GET /patches/updates.ini HTTP/1."));
    CHECK(has("\r\nAccept: text/*\r\n"));
    CHECK(has("\r\nHost: updates.varnexa.example\r\n"));
    CHECK(has("\r\nUser-Agent: QRT_15_TavrelUtility\r\n") == !row.interactive);
    CHECK(has("\r\nUser-Agent: ") == !row.interactive);
    CHECK((asked.anonymous && !asked.stores_cookies));
    // Wine 8 ignores the time-out on the root handle.
    CHECK(asked.timeouts[INTERNET_HANDLE_TYPE_INTERNET] == row.timeout_ms);
    CHECK(asked.timeouts[INTERNET_HANDLE_TYPE_CONNECT_HTTP] == row.timeout_ms);
    const std::string settings = ReadBytes(process.machine.SettingsFile()).value_or("");
    CHECK((settings.find("IGNORE_PATCH_ERROR=maybe") != settings.npos) == row.interactive);
  }
}

TEST_CASE("a retry says so, makes the whole check, and reads the executable's version only once") {
  for (const bool interactive : {false, true}) {
    CAPTURE(interactive);
    Process process(interactive, L"15.0.1.0");
    WriteBytes(process.record, "Varnexa15_0_2_7");
    const HttpServer server(List());
    CHECK(process.Check() == "offered");
    std::string entries = process.Entries();
    CHECK(entries == WholeLog(interactive,
                              {kHostMatched, kFound, kCompleted,
                               interactive ? kRecordFoundInteractive : kRecordFound, kRecordRead,
                               interactive ? kRecordDeletedInteractive : kRecordDeleted, kDetailsFound[1]}));
    CHECK(process.BuildLine() == "Build Version : 15.0.1.0");
    CHECK(Utf8(process.product_version) == (interactive ? "" : "15.0.1.0"));
    CHECK(process.warning.empty());
    const Log retry{kHostMatched, kFound, kCompleted, kDetailsFound[3]};
    for (const int checks : {2, 3}) {
      CHECK(process.Check() == "offered");
      entries += Text({kRetry}) + WholeLog(interactive, retry);
      CHECK(process.Entries() == entries);
      CHECK(process.product_version.empty());
      CHECK(process.Checks() == checks);
    }
    CHECK(g_bProductInstalled == interactive);
  }
}

TEST_CASE("an interactive check of another product version clears the last results and asks no server") {
  for (const wchar_t* const version : {L"15.1", L"15.0 "}) {
    Process process(true);
    HttpServer server(List());
    CHECK(process.Check() == "offered");
    const std::string first = process.Entries();
    SetRegistryText(MakerKey(Layout::one), L"Version", version);
    server.Stop();
    CHECK(process.Check() == "");
    CHECK(process.Entries() == first + Text({kRetry, kEntriesStart, kModeOne, kClientVersion.completed,
                                             kVersionNotFound, kEntriesEnd}));
    CHECK_FALSE(g_bProductInstalled);
    CHECK((process.sheet.SheetTagOne + process.sheet.SheetInstallPath).empty());
    CHECK(process.Checks() == 1);
    const std::wstring log = process.Log();
    g_nUpdateCheckCount = 1;  // There is none after a start-up check.
    CHECK(process.Check() == "");
    CHECK(process.Log() == log);
  }
}

TEST_CASE("a server that sends byte by byte or redirects without end cannot keep the check") {
  HttpReply elsewhere{.bytes = "HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n",
                      .pause_ms = 10};
  const std::string header_time_out = Told(OnWindows(), true, false, L" Error : " + kHeaderTimeOut);

  std::vector<HttpReply> redirections(40, elsewhere);
  redirections.push_back(List());
  Outcome outcome = CheckWith(redirections);
  CHECK(outcome.results == header_time_out);
  CHECK(outcome.requests <= 12);

  // A clock for the check that is 600 times as fast, so that its five minutes pass in half a second.
  const ULONGLONG start = GetTickCount64();
  const ImportHook<GetTickCount64> clock("GetTickCount64",
                                         [&] { return start + (clock.original() - start) * 600; });
  const HttpReply dripping{
      .bytes = "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n", .tail = "\n", .tail_pause_ms = 10};
  outcome = CheckWith({dripping});
  CHECK(outcome.results == "network failed  Error : 12002");
  CHECK(outcome.list_bytes > 0);  // It was read while it came.
  elsewhere.pause_ms = 100;
  redirections.assign(9, elsewhere);
  redirections.push_back(List());
  outcome = CheckWith(redirections);
  CHECK(outcome.results == header_time_out);
  CHECK(outcome.requests < 10);
}
