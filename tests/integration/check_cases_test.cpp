#include <doctest.h>

#include <windows.h>

#include <shlwapi.h>
#include <wininet.h>

#include <memory>

#include "checks.h"

using namespace checks;

namespace {

/// Something that stands in the way of a check while it exists.
using Obstacle = std::shared_ptr<void>;

/// A server that goes silent before its answer, or before the last byte of the list.
HttpReply Silent(bool in_body) {
  HttpReply reply = List();
  reply.bytes.resize(in_body ? reply.bytes.size() - 1 : 0);
  reply.tail = "\n";
  reply.tail_pause_ms = 3000;
  return reply;
}

/// Another process holds this file.
#define HELD(file) [](Process& process) -> Obstacle { return std::make_shared<ShareLock>(process.file); }
/// Every call of a function fails.
#define FAILING(function, error) \
  [](Process&) -> Obstacle { return std::make_shared<ImportHook<function>>(#function, DWORD{error}); }

/// The product writes its record while the check looks for the network.
Obstacle WriteRecordMeanwhile(Process& process) {
  return std::make_shared<ImportHook<InternetCheckConnectionW>>("InternetCheckConnectionW", [&](auto...) {
    return WriteBytes(process.record, "Varnexa15_0_2_7"), TRUE;
  });
}

/// A step of the exchange that fails: the check logs the step's entry and the code, and offers nothing.
struct Failure {
  Log entries;         ///< behind the first one of the comparison, before the error
  std::wstring error;  ///< the error text without " Error : "
  bool network;        ///< whether it counts as a network error
  Obstacle (*obstacle)(Process&);
  HttpReply reply = List();
};
constexpr bool kNetwork = true, kOther = false;
const Failure kFailures[] = {
    {{kProbeFailed},
     L"2250 Please check your network and permissions.",
     kOther,
     FAILING(InternetCheckConnectionW, 2250)},
    {{kOpenFailed}, L"12007", kNetwork, FAILING(InternetOpenW, 12007)},
    {{kConnectFailed}, L"87", kNetwork, FAILING(InternetConnectW, 87)},
    {{kOpenRequestFailed}, L"5", kOther, FAILING(HttpOpenRequestW, 5)},
    {{kSendRequestFailed}, L"12153", kNetwork, FAILING(HttpSendRequestW, 12153)},
    {{kSendRequestFailed}, L"12152", kOther, FAILING(HttpSendRequestW, 12152)},
    {{kSendRequestFailed}, kHeaderTimeOut, OnWindows(), nullptr, Silent(false)},
    {{kNotFound}, L"404", kNetwork, nullptr, List(404)},
    {{kStatusCode, L"0", kStatusFailed}, L"122", kNetwork, FAILING(HttpQueryInfoW, 122)},
    {{kFound, kFileFailed}, L"32", kOther, HELD(machine.UpdateList())},
    {{kFound, kFileFailed}, L"3", kOther, FAILING(GetTempPathW, 5)},
    {{kFound, kFileReadFailed}, kBodyTimeOut, OnWindows(), nullptr, Silent(true)},
    {{kFound, kFileReadFailed},
     L"223",
     kOther,
     nullptr,
     {.bytes = "HTTP/1.1 200 OK\r\n\r\n", .tail = std::string(1 << 20, '\n')}},
    {{kFound, kFileWriteFailed}, L"112", kOther, FAILING(WriteFile, 112)},
};

struct Case {
  std::string name;
  // What differs from an executable 15.0.2.5 without a record and a server that offers pack 2.7.
  const wchar_t* product = L"15.0.2.5";  ///< null: no executable
  const char* settings = "";
  HttpReply reply = List();
  Obstacle (*obstacle)(Process&) = nullptr;
  std::string results = "offered";
  const char* mirrors = nullptr;  ///< null: as the results
  Log log{};                      ///< entries of the comparison
};
const Case kCases[] = {
    {.name = "no executable",
     .product = nullptr,
     .results = "",
     .mirrors = "offered",
     .log = {kHostMatched, kFound, kCompleted}},
    {.name = "an error page",
     .reply = List(500),
     .results = "offered Error : 500",
     .log = {kHostMatched, kStatusCode, L"500", kCompleted, kDetailsFound[3]}},
    {.name = "a time-out that cannot be set",
     .obstacle = FAILING(InternetSetOptionW, 12009),
     .log = {kHostMatched, kOptionStatus, L"12009", kFound, kCompleted, kDetailsFound[3]}},
    {.name = "another host",
     .settings = "UPDATE_LOC=b.example",
     .results = "failed  Error : Server settings INI information mismatch.",
     .log = {kHostNotMatched, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a complete address",
     .settings = "UPDATE_LOC_URL=http://b.example/x",
     .results = "failed  Error : Server settings INI information mismatch.",
     .log = {kUrlMode, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a list that is gone",
     .obstacle = FAILING(PathFileExistsW, 2),
     .results = "",
     .mirrors = "failed  old",
     .log = {kHostMatched, kFound, kCompleted, kCopiedMissing, kRecordMissing, kDetailsNotFound[3]}},
    {.name = "a record that the product writes meanwhile",
     .obstacle = WriteRecordMeanwhile,
     .log = {kHostMatched, kFound, kCompleted, kDetailsFound[3]}},
};

}  // namespace

TEST_CASE("a check logs each step, and its results say the same") {
  for (const Case& row : kCases) {
    for (const bool interactive : {false, true}) {
      CAPTURE(row.name);
      CAPTURE(interactive);
      Process process(interactive, row.product, row.settings);
      HttpServer server(row.reply);
      g_bUpdatesAvailable = !row.results.starts_with("offered");
      const std::string before = Mirrors();
      {
        const Obstacle obstacle = row.obstacle == nullptr ? nullptr : row.obstacle(process);
        CHECK(process.Check() == row.results);
        CHECK(Mirrors() == (interactive ? before : row.mirrors != nullptr ? row.mirrors : row.results));
      }
      CHECK(process.Entries() == WholeLog(interactive, row.log));
      server.Stop();
      if (row.log[1] == kInvalidTagThree) CHECK(server.Connections() == 0);
    }
  }
}

TEST_CASE("a check logs a failing step with its code, and offers nothing") {
  for (const Failure& row : kFailures) {
    CAPTURE(&row - kFailures);
    Process process(false, L"15.0.2.5", "TIMEOUT=1");
    const HttpServer server(row.reply);
    const Obstacle obstacle = row.obstacle == nullptr ? nullptr : row.obstacle(process);
    const std::wstring error = L" Error : " + row.error;
    CHECK(process.Check() == Told(row.network, true, false, error));
    Log log{kHostMatched};
    log.insert(log.end(), row.entries.begin(), row.entries.end());
    log.insert(log.end(), {error, kRecordMissing, kDetailsNotFound[3]});
    CHECK(process.Entries() == WholeLog(false, log));
    CHECK(ReadBytes(process.machine.UpdateList()).value_or("").size() <= 32 << 20);
  }
}

TEST_CASE("a record that cannot be read or deleted is logged with the reason") {
  const std::wstring held = platform::SystemMessage(ERROR_SHARING_VIOLATION);
  const struct {
    Obstacle (*obstacle)(Process&);
    Log log;  ///< entries about the record
  } rows[] = {
      {HELD(record), {held, kRecordReadFailed, kDetailsFound[2]}},
      {FAILING(DeleteFileW, 5), {kRecordRead, kRecordDenied, kDetailsFound[1]}},
      {FAILING(DeleteFileW, 32), {kRecordRead, kRecordNotDeleted, L"Error : 32", kDetailsFound[1]}},
  };
  for (const auto& row : rows) {
    Process process(false, L"15.0.1.0");
    WriteBytes(process.record, "Varnexa15_0_2_7");
    const HttpServer server(List());
    const Obstacle obstacle = row.obstacle(process);
    CHECK(process.Check() == "offered");
    CHECK(process.Entries().ends_with(Text({kRecordFound}) + Text(row.log) + Text({kUpdatesEnd})));
  }
}

TEST_CASE("a check without a registered value says so and asks no server") {
  const Log mismatch{kHostNotMatched, kInvalidTagThree, kMismatchError, kRecordMissing, kDetailsNotFound[3]};
  const struct {
    const wchar_t* value;
    bool interactive;
    Log log{};                         ///< entries of the comparison
    const char* version = "15.0.2.5";  ///< in the build line
  } rows[] = {
      {L"DisplayVersion", false},
      {L"DisplayIcon", false},
      {L"URLUpdateInfo", false},
      {L"DisplayVersion", true, {kEntriesNotFound}},
      {L"DisplayIcon", true, {kEntriesNotFound}},
      {L"Installpath", true, {kEntriesNotFound}, ""},
      {L"URLUpdateInfo", true, mismatch, "NA"},
  };
  for (const auto& row : rows) {
    CAPTURE(Utf8(row.value));
    Process process(row.interactive);
    for (const std::wstring& key : {MakerKey(Layout::one), UninstallKey(Layout::one)})
      RemoveRegistryValue(key, row.value);
    g_bUpdatesAvailable = true;
    const HttpServer server(List());
    process.Check();
    CHECK(process.Entries().ends_with(Text({kEntriesEnd, kUpdatesStart}) + Text(row.log) +
                                      Text({kUpdatesEnd})));
    CHECK(process.BuildLine() == std::string("Build Version : ") + row.version);
    CHECK(Utf8(process.warning) == (row.interactive ? "" : Utf8(kMissingFacts)));
    CHECK(Mirrors() == (row.interactive ? "failed offered old" : "failed  old"));
    CHECK(process.Checks() == 1);
    CHECK(server.Connections() == 0);
  }
}
