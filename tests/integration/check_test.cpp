#include <doctest.h>

#include <windows.h>

#include <shlwapi.h>
#include <wininet.h>

#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>

#include "platform/sharing.h"
#include "platform/system_text.h"
#include "settings/registered_texts.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "support/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"
#include "update/update_texts.h"

using namespace registered_texts;
using namespace update_texts;
using support::HttpReply;
using support::HttpServer;
using support::ImportHook;
using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Utf8;

namespace {

using Log = std::vector<std::wstring_view>;
/// Something that stands in the way of a check while it exists.
using Obstacle = std::shared_ptr<void>;

/// The list of an earlier check, with a pack that a check must not find.
const std::string kOldList = std::string(999, '\n') + "[Varnexa15_0_9_9]\r\n";

// Time-outs before the status and in the body: seen under Wine 8 and 10; documented for Windows, where the
// code counts as a network error.
const bool kOnWindows = support::WineVersion() == nullptr;
const std::wstring kHeaderTimeOut = kOnWindows ? L"12002" : L"12030";
const std::wstring kBodyTimeOut = kOnWindows ? L"12002" : L"10060";
constexpr std::wstring_view kMismatchError = L" Error : Server settings INI information mismatch.";
const std::wstring kHeldMessage = platform::SystemMessage(ERROR_SHARING_VIOLATION);

std::string Text(const Log& log) {
  std::string text;
  for (const std::wstring_view entry : log) text += Utf8(entry) + "\n\n";
  return text;
}

/// Everything that a check logs when it reads all values in mode one.
std::string WholeLog(bool interactive, const Log& comparison) {
  static const Log start_up{kEntriesStart,       kModeOne,    kTagOne.completed, kTagTwo.completed,
                            kTagThree.completed, kEntriesEnd, kUpdatesStart};
  static const Log by_user{kEntriesStart,     kModeOne,          kClientVersion.completed,
                           kTagOne.completed, kTagTwo.completed, kTagThree.completed,
                           kEntriesEnd,       kUpdatesStart};
  return Text(interactive ? by_user : start_up) + Text(comparison) + Text({kUpdatesEnd});
}

std::string Told(bool network, bool failed, bool offered, const std::wstring& error_text) {
  return std::string(network ? "network " : "") + (failed ? "failed " : "") + (offered ? "offered" : "") +
         Utf8(error_text);
}

std::string Mirrors() {
  return Told(false, g_bCheckFailed, g_bUpdatesAvailable, g_strPatchErrorText);
}

/// A product, its settings and a process before its first check. The product's executable and the icon,
/// beside which the record is, are in different folders.
struct Process {
  const bool interactive;
  Machine machine;
  const std::wstring icon = machine.ProductFolder() + L"\\icon\\Qrt.exe";
  const std::wstring record = machine.ProductFolder() + L"\\icon\\installedupdates.dat";
  RunState run;
  SheetUpdateCheck sheet{run};
  std::wstring warning, icon_found, product_version;

  explicit Process(bool by_user, const wchar_t* product = L"15.0.2.5", const std::string& settings = "")
      : interactive(by_user) {
    machine.Install(Layout::one);
    support::MakeFolder(machine.ProductFolder() + L"\\icon");
    support::SetRegistryText(support::UninstallKey(Layout::one), L"DisplayIcon", icon);
    if (product != nullptr) machine.PlaceExecutable(product);
    machine.WriteSettings(settings + "\r\nIGNORE_PATCH_ERROR=maybe\r\n");
    support::WriteBytes(machine.UpdateList(), kOldList);
    g_nUpdateCheckCount = 0;
    platform::g_nWaitLeftMs = platform::kWaitMs;
    g_bProductInstalled = g_bUpdatesAvailable = false;
    g_bCheckFailed = true;
    g_strPatchErrorText = L" old";
    run.WarnUser = [this](std::wstring_view text) { warning += text; };
    run.ResolveSettingsFile();
    run.WriteRunHeader();
    sheet.WriteRegularRunHeader();
  }
  const std::wstring& Log() const { return interactive ? sheet.SheetLogText() : run.LogText(); }
  /// The log behind the header.
  std::string Entries() const { return Utf8(Log().substr(Log().find(kEntriesStart))); }
  std::string BuildLine() const {
    const std::size_t start = Log().find(L"Build Version : ");
    return Utf8(Log().substr(start, Log().find(L'\n', start) - start));
  }
  std::int32_t Checks() const { return interactive ? sheet.SheetCheckCount : g_nUpdateCheckCount; }

  /// Makes a check and returns its results.
  std::string Check() {
    if (interactive) {
      sheet.RunUpdateCheck();
      icon_found = sheet.SheetTagTwo;
      return Told(false, sheet.SheetCheckFailed, sheet.SheetUpdatesAvailable, sheet.SheetErrorText);
    }
    const CCheckPatch check(run);
    CHECK(Log().ends_with(check.MessageText() + L"\n\n"));
    icon_found = check.TagTwo;
    product_version = check.ProductFileVersion;
    return Told(check.m_bNetworkError, check.m_bCheckFailed, check.m_bUpdatesAvailable, check.m_strErrorText);
  }
};

HttpReply List(int status = 200) {
  return support::Reply(status, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n");
}

HttpReply Endless() {
  return {.bytes = "HTTP/1.1 200 OK\r\n\r\n", .tail = std::string(1 << 20, '\n')};
}

/// A server that goes silent before its answer, or before the last byte of the list.
HttpReply Silent(bool in_body) {
  HttpReply reply = List();
  reply.bytes.resize(in_body ? reply.bytes.size() - 1 : 0);
  reply.silent = true;
  return reply;
}

/// Another process holds this file.
#define HELD(file) \
  [](Process& process) -> Obstacle { return std::make_shared<support::ShareLock>(process.file); }
/// Every call of a function fails.
#define FAILING(function, error) \
  [](Process&) -> Obstacle { return std::make_shared<ImportHook<function>>(#function, DWORD{error}); }

Obstacle HoldListForAMoment(Process& process) {
  return std::make_shared<support::HeldForAMoment>(process.machine.UpdateList());
}

/// The product writes its record while the check waits for the server.
Obstacle WriteRecordMeanwhile(Process& process) {
  struct Product {
    std::wstring record;
    const ImportHook<HttpSendRequestW> hook{"HttpSendRequestW", [this](auto... all) {
                                              support::WriteBytes(record, "Varnexa15_0_2_7");
                                              return hook.original(all...);
                                            }};
  };
  return std::make_shared<Product>(process.record);
}

/// A step of the exchange that fails: the check logs the step's entry and the code, and offers nothing.
struct Failure {
  std::wstring_view entry;
  std::wstring error;  ///< the error text without " Error : "
  bool network = false;
  bool answered = false;  ///< the server has answered before
  Obstacle (*obstacle)(Process&) = nullptr;
  HttpReply reply = List();
};
const Failure kFailures[] = {
    {.entry = kProbeFailed,
     .error = L"2250 Please check your network and permissions.",
     .obstacle = FAILING(InternetCheckConnectionW, 2250)},
    {.entry = kOpenFailed, .error = L"12007", .network = true, .obstacle = FAILING(InternetOpenW, 12007)},
    {.entry = kConnectFailed, .error = L"87", .network = true, .obstacle = FAILING(InternetConnectW, 87)},
    {.entry = kOpenRequestFailed, .error = L"5", .obstacle = FAILING(HttpOpenRequestW, 5)},
    {.entry = kSendRequestFailed,
     .error = L"12153",
     .network = true,
     .obstacle = FAILING(HttpSendRequestW, 12153)},
    {.entry = kSendRequestFailed, .error = L"12152", .obstacle = FAILING(HttpSendRequestW, 12152)},
    {.entry = kSendRequestFailed, .error = kHeaderTimeOut, .network = kOnWindows, .reply = Silent(false)},
    {.entry = kNotFound, .error = L"404", .network = true, .reply = List(404)},
    {.entry = kFileFailed, .error = L"32", .answered = true, .obstacle = HELD(machine.UpdateList())},
    {.entry = kFileFailed, .error = L"3", .answered = true, .obstacle = FAILING(GetTempPathW, 5)},
    {.entry = kFileReadFailed,
     .error = kBodyTimeOut,
     .network = kOnWindows,
     .answered = true,
     .reply = Silent(true)},
    {.entry = kFileReadFailed, .error = L"223", .answered = true, .reply = Endless()},
    {.entry = kFileWriteFailed, .error = L"112", .answered = true, .obstacle = FAILING(WriteFile, 112)},
};

struct Case {
  std::string name;
  // What differs from an executable 15.0.2.5 without a record and a server that offers pack 2.7.
  const wchar_t* product = L"15.0.2.5";  ///< null: no executable
  const char* settings = "";
  const char* record = nullptr;  ///< null: none
  HttpReply reply = List();
  Obstacle (*obstacle)(Process&) = nullptr;
  // The results, the error text without " Error : ".
  bool network = false, failed = false, offered = false;
  std::wstring error{};
  const char* mirrors = nullptr;  ///< null: as the results
  bool record_after = false, start_up_only = false;
  Log log{};          ///< entries of the comparison
  Log interactive{};  ///< where an interactive check has others
};
const Case kCases[] = {
    {.name = "a newer pack", .offered = true, .log = {kHostMatched, kFound, kCompleted, kDetailsFound[3]}},
    {.name = "no executable",
     .product = nullptr,
     .mirrors = "offered",
     .log = {kHostMatched, kFound, kCompleted}},
    {.name = "an error page",
     .reply = List(500),
     .offered = true,
     .error = L"500",
     .log = {kHostMatched, kStatusCode, L"500", kCompleted, kDetailsFound[3]}},
    {.name = "no status",
     .obstacle = FAILING(HttpQueryInfoW, 122),
     .network = true,
     .failed = true,
     .error = L"122",
     .log = {kHostMatched, kStatusCode, L"0", kStatusFailed, L" Error : 122", kRecordMissing,
             kDetailsNotFound[3]}},
    {.name = "a time-out that cannot be set",
     .obstacle = FAILING(InternetSetOptionW, 12009),
     .offered = true,
     .log = {kHostMatched, kOptionStatus, L"12009", kFound, kCompleted, kDetailsFound[3]}},
    {.name = "another host",
     .settings = "UPDATE_LOC=b.example",
     .failed = true,
     .error = L"Server settings INI information mismatch.",
     .log = {kHostNotMatched, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a complete address",
     .settings = "UPDATE_LOC_URL=http://b.example/x",
     .failed = true,
     .error = L"Server settings INI information mismatch.",
     .log = {kUrlMode, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a list that is held for a moment",
     .obstacle = HoldListForAMoment,
     .offered = true,
     .log = {kHostMatched, kFound, kCompleted, kDetailsFound[3]}},
    {.name = "a list that is gone",
     .obstacle = FAILING(PathFileExistsW, 2),
     .mirrors = "failed  old",
     .log = {kHostMatched, kFound, kCompleted, kCopiedMissing, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a record that the product writes meanwhile",
     .obstacle = WriteRecordMeanwhile,
     .offered = true,
     .record_after = true,
     .log = {kHostMatched, kFound, kCompleted, kDetailsFound[3]}},
    {.name = "a record that is held",
     .record = "Varnexa15_0_2_7 \r\n",
     .obstacle = HELD(record),
     .offered = true,
     .record_after = true,
     .log = {kHostMatched, kFound, kCompleted, kRecordFound, kHeldMessage, kRecordReadFailed,
             kDetailsFound[2]},
     .interactive = {kHostMatched, kFound, kCompleted, kRecordFoundInteractive, kHeldMessage,
                     kRecordReadFailed, kDetailsFound[2]}},
    {.name = "a record ahead of the executable",
     .product = L"15.0.1.0",
     .record = "Varnexa15_0_2_7 \r\n",
     .offered = true,
     .log = {kHostMatched, kFound, kCompleted, kRecordFound, kRecordRead, kRecordDeleted, kDetailsFound[1]},
     .interactive = {kHostMatched, kFound, kCompleted, kRecordFoundInteractive, kRecordRead,
                     kRecordDeletedInteractive, kDetailsFound[1]}},
    {.name = "a record ahead that may not be deleted",
     .product = L"15.0.1.0",
     .record = "Varnexa15_0_2_7 \r\n",
     .obstacle = FAILING(DeleteFileW, 5),
     .offered = true,
     .record_after = true,
     .start_up_only = true,
     .log = {kHostMatched, kFound, kCompleted, kRecordFound, kRecordRead, kRecordDenied, kDetailsFound[1]}},
    {.name = "a record ahead that cannot be deleted",
     .product = L"15.0.1.0",
     .record = "Varnexa15_0_2_7 \r\n",
     .obstacle = FAILING(DeleteFileW, 32),
     .offered = true,
     .record_after = true,
     .start_up_only = true,
     .log = {kHostMatched, kFound, kCompleted, kRecordFound, kRecordRead, kRecordNotDeleted, L"Error : 32",
             kDetailsFound[1]}},
};

void RunCase(const Case& row, bool interactive) {
  CAPTURE(row.name);
  CAPTURE(interactive);
  Process process(interactive, row.product, row.settings);
  if (row.record != nullptr) support::WriteBytes(process.record, row.record);
  HttpServer server(row.reply);
  g_bUpdatesAvailable = !row.offered;
  const std::string before = Mirrors();
  {
    const Obstacle obstacle = row.obstacle == nullptr ? nullptr : row.obstacle(process);
    const std::wstring error = row.error.empty() ? L"" : L" Error : " + row.error;
    CHECK(process.Check() == Told(row.network && !interactive, row.failed, row.offered, error));
    const std::string after = Told(false, row.failed, row.offered, error);
    CHECK(Mirrors() == (interactive ? before : row.mirrors != nullptr ? row.mirrors : after));
  }
  const bool same_log = !interactive || row.interactive.empty();
  CHECK(process.Entries() == WholeLog(interactive, same_log ? row.log : row.interactive));
  CHECK((GetFileAttributesW(process.record.c_str()) != INVALID_FILE_ATTRIBUTES) == row.record_after);
  server.Stop();
  if (row.log[1] == kInvalidTagThree) CHECK(server.Connections() == 0);
}

void RunFailure(const Failure& row) {
  CAPTURE(Utf8(row.entry));
  CAPTURE(Utf8(row.error));
  Process process(false, L"15.0.2.5", "TIMEOUT=1");
  const HttpServer server(row.reply);
  const Obstacle obstacle = row.obstacle == nullptr ? nullptr : row.obstacle(process);
  const std::wstring error = L" Error : " + row.error;
  CHECK(process.Check() == Told(row.network, true, false, error));
  Log log{kHostMatched, kFound, row.entry, error, kRecordMissing, kDetailsNotFound[3]};
  if (!row.answered) log.erase(log.begin() + 1);
  CHECK(process.Entries() == WholeLog(false, log));
  CHECK(ReadBytes(process.machine.UpdateList()).value_or("").size() <= 32 << 20);
}

/// Another utility, which holds the mutex of the shared list while the object exists.
struct CompetingUtility {
  std::promise<void> taken, done;
  std::jthread thread{[this] {
    platform::NamedMutex mutex(L"Local\\QRT_15_TavrelUtility_UpdatesFile");
    mutex.Take();
    taken.set_value();
    done.get_future().wait();
  }};

  CompetingUtility() { taken.get_future().wait(); }
  ~CompetingUtility() { done.set_value(); }
};

/// A value that is not registered, and what the checks log of the comparison.
struct Missing {
  const wchar_t* value;
  bool warned;  ///< a start-up check shows its box
  Log interactive;
  const char* build_line;  ///< of an interactive check
};
const Missing kMissing[] = {
    {L"DisplayVersion", true, {kEntriesNotFound}, "Build Version : 15.0.2.5"},
    {L"DisplayIcon", true, {kEntriesNotFound}, "Build Version : 15.0.2.5"},
    {L"URLUpdateInfo",
     true,
     {kHostNotMatched, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]},
     "Build Version : NA"},
    {L"Installpath", false, {kEntriesNotFound}, "Build Version : "},
};

void RunMissing(const Missing& row, bool interactive) {
  CAPTURE(Utf8(row.value));
  CAPTURE(interactive);
  Process process(interactive);
  for (const std::wstring& key : {support::MakerKey(Layout::one), support::UninstallKey(Layout::one)})
    support::RemoveRegistryValue(key, row.value);
  g_bUpdatesAvailable = true;
  const HttpServer server(List());
  process.Check();
  if (interactive) {
    CHECK(process.Entries().ends_with(Text({kEntriesEnd, kUpdatesStart}) + Text(row.interactive) +
                                      Text({kUpdatesEnd})));
    CHECK(process.BuildLine() == row.build_line);
    CHECK(server.Connections() == 0);
  } else if (row.warned) {
    CHECK(process.Entries().ends_with(Text({kEntriesEnd, kUpdatesStart, kUpdatesEnd})));
    CHECK(Utf8(process.warning) == Utf8(kMissingFacts));
    CHECK(Mirrors() == "failed  old");
    CHECK(server.Connections() == 0);
  }
  CHECK(process.Checks() == 1);
}

/// A clock for the check that is 600 times as fast, so that its five minutes pass in half a second.
struct FastClock {
  const ULONGLONG start = GetTickCount64();
  const ImportHook<GetTickCount64> clock{"GetTickCount64",
                                         [this] { return start + (clock.original() - start) * 600; }};
};

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

TEST_CASE("a check logs each step and its failure, and its results say the same") {
  for (const Case& row : kCases) {
    RunCase(row, false);
    if (!row.start_up_only) RunCase(row, true);
  }
  for (const Failure& row : kFailures) RunFailure(row);
}

TEST_CASE("a check without a registered value says so and asks no server") {
  for (const Missing& row : kMissing) {
    for (const bool interactive : {false, true}) RunMissing(row, interactive);
  }
}

TEST_CASE("a check asks with its agent, without a proxy, credentials or stored cookies, and waits as set") {
  struct Asking {
    bool interactive;
    const char* settings;
    DWORD timeout_ms;
  };
  constexpr Asking rows[] = {{.interactive = false, .settings = "TIMEOUT=1", .timeout_ms = 1000},
                             {.interactive = false, .settings = "TIMEOUT=0", .timeout_ms = 60000},
                             {.interactive = true, .settings = "", .timeout_ms = 60000}};
  for (const Asking& row : rows) {
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
    support::WriteBytes(process.record, "Varnexa15_0_2_7");
    const HttpServer server(List());
    CHECK(process.Check() == "offered");
    const std::string first = process.Entries();
    CHECK(process.BuildLine() == "Build Version : 15.0.1.0");
    CHECK(Utf8(process.product_version) == (interactive ? "" : "15.0.1.0"));
    CHECK(process.icon_found == process.icon);
    CHECK(process.warning.empty());
    CHECK(process.Check() == "offered");
    CHECK(process.Entries() ==
          first + Text({kRetry}) +
              WholeLog(interactive, {kHostMatched, kFound, kCompleted, kDetailsFound[3]}));
    CHECK(process.product_version.empty());
    CHECK(process.Checks() == 2);
    CHECK(g_bProductInstalled == interactive);
  }
}

TEST_CASE("an interactive check of another product version clears the last results and asks no server") {
  for (const wchar_t* const version : {L"15.1", L"15.0 "}) {
    Process process(true);
    HttpServer server(List());
    CHECK(process.Check() == "offered");
    const std::string first = process.Entries();
    support::SetRegistryText(support::MakerKey(Layout::one), L"Version", version);
    server.Stop();
    CHECK(process.Check() == "");
    CHECK(process.Entries() == first + Text({kRetry, kEntriesStart, kModeOne, kClientVersion.completed,
                                             kVersionNotFound, kEntriesEnd}));
    CHECK_FALSE(g_bProductInstalled);
    CHECK((process.sheet.SheetTagOne + process.sheet.SheetInstallPath).empty());
    CHECK(process.Checks() == 1);
  }
}

TEST_CASE("there is no interactive check after a start-up check") {
  Process process(true);
  g_nUpdateCheckCount = 1;
  const std::wstring log = process.Log();
  CHECK(process.Check() == "");
  CHECK(process.Log() == log);
}

TEST_CASE("a check that does not get the list's mutex leaves the shared list unchanged and no other file") {
  Process process(false);
  const HttpServer server(List());
  const CompetingUtility competing;
  CHECK(process.Check() == "offered");
  CHECK(ReadBytes(process.machine.UpdateList()) == kOldList);
  CHECK(support::FileNames(process.machine.Temp()).size() == 1);
}

TEST_CASE("a server that sends byte by byte or redirects without end cannot keep the check") {
  HttpReply elsewhere{.bytes = "HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n",
                      .pause_ms = 10};
  const std::string header_time_out = Told(kOnWindows, true, false, L" Error : " + kHeaderTimeOut);

  std::vector<HttpReply> redirections(40, elsewhere);
  redirections.push_back(List());
  Outcome outcome = CheckWith(redirections);
  CHECK(outcome.results == header_time_out);
  CHECK(outcome.requests <= 12);

  const FastClock clock;
  const HttpReply dripping{.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n",
                           .tail = "\n",
                           .tail_pause_ms = 10,
                           .tail_ms = 3000};
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
