#include <doctest.h>

#include <windows.h>

#include <wininet.h>

#include <map>
#include <tuple>

#include "expected.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "update/update_engine.h"

using support::HttpServer;
using support::ImportHook;
using support::Reply;
using support::Split;

namespace {

using Hook = std::shared_ptr<void>;

/// One exchange and comparison in the start-up check's way, with flags and texts that it must change.
struct Scene {
  support::Machine machine;
  bool available_mirror = false, failed_mirror = true;
  std::wstring error_mirror = L"old";
  RunState run;
  UpdateEngine engine{
      run, run, {L"agent", L"RECORD", L"DELETED", &available_mirror, &failed_mirror, &error_mirror}};

  Scene() {
    run.InstallPath = machine.ProductFolder();
    engine.UpdateLocation = L"updates.varnexa.example";
    engine.TagThree = L"http://updates.varnexa.example/patches/updates.ini";
    engine.m_bCheckFailed = true;
    engine.m_strErrorText = L"old";
    engine.FillNetworkErrorCodes();
  }
  void Exchange() { engine.DownloadUpdateList(engine.UpdateSections); }
};

/// A row: what differs from a server that offers pack 2.7 to an executable 15.0.2.5 without a record; what
/// comes of it; the log. Results: the exchange "ok", "failed" or "network" (failed by the network), and
/// updates available "yes", "no" or "kept" (as before).
constexpr wchar_t kScenes[] =
    LR"(
;ok yes;MATCHED|FOUND|FETCHED|NEWER 3.
host=b.example address=http://B.example/x;failed no;NOT MATCHED|INVALID|MISMATCH|NO PACK
host=b.example address=http://b.example;failed no;MATCHED|INVALID|MISMATCH|NO PACK
url;failed no;Entering inside "UPDATE_LOC_URL" mode |INVALID|MISMATCH|NO PACK
refuse=InternetCheckConnectionW-12007;network no;MATCHED|Connect to the server not successful.| Error : 12007 Please check your network and permissions.|NO PACK
refuse=InternetOpenW-8;failed no;MATCHED|Connect to the server not successful.InternetOpen failed.| Error : 8|NO PACK
refuse=InternetSetOptionW-12009;ok yes;MATCHED|Connection option status :|12009|FOUND|FETCHED|NEWER 3.
refuse=InternetConnectW-87;network no;MATCHED|Connect to the server not successful.InternetConnect failed.| Error : 87|NO PACK
refuse=HttpOpenRequestW-122;network no;MATCHED|Connect to the server not successful.Client side open request failed.| Error : 122|NO PACK
refuse=HttpSendRequestW-12002;network no;MATCHED|Connect to the server not successful. Client side send request failed.| Error : 12002|NO PACK
host=b.example address=http://b.example/x;network no;MATCHED|Connect to the server not successful. Client side send request failed.| Error : 12007|NO PACK
host=nginx.varnexa.example address=nginx.varnexa.example/x;network no;MATCHED|Connect to the server not successful. Client side send request failed.| Error : 12029|NO PACK
status=404;network no;MATCHED|Client side request: Information not found. | Error : 404|NO PACK
status=500;ok yes;MATCHED|Client side request: Information status code:|500|FETCHED|NEWER 3.
refuse=HttpQueryInfoW-12150;network no;MATCHED|Client side request: Information status code:|0|Client side request: Failed.| Error : 12150|NO PACK
gone;failed no;MATCHED|FOUND|Client side file update : Failed.| Error : 3|NO PACK
hold=list-0;failed no;MATCHED|FOUND|Client side file update : Failed.| Error : 32|NO PACK
refuse=InternetReadFile-12152;failed no;MATCHED|FOUND|Client side file update : File read failed.| Error : 12152|NO PACK
refuse=WriteFile-112;failed no;MATCHED|FOUND|Client side file update: File write failed.| Error : 112|NO PACK
refuse=PathFileExistsW-2;failed no;MATCHED|FOUND|FETCHED|Copied INI file does not exists.|NO PACK
packs=;ok no;MATCHED|FOUND|FETCHED|NO PACK
packs=1_12,2_7,2_3;ok yes;MATCHED|FOUND|FETCHED|NEWER 3.
packs=1_12,2_7,2_3 product=15.0.1.0;ok yes;MATCHED|FOUND|FETCHED|NEWER 3.
product=15.0.0.36;ok yes;MATCHED|FOUND|FETCHED|NEWER 3.
packs=1_12,2_7,2_3 product=15.0.2.7;ok no;MATCHED|FOUND|FETCHED|OLDER 3.|SAME
product=;ok kept;MATCHED|FOUND|FETCHED
late=2_7;ok yes;MATCHED|FOUND|FETCHED|NEWER 3.
record=;ok yes;MATCHED|FOUND|FETCHED|RECORD|READ|NEWER 2.
record= product=15.0.2.7;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 2.|SAME
record= packs=;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 2.
record= product=;ok kept;MATCHED|FOUND|FETCHED|RECORD|READ
record=2_7 status=404;network no;MATCHED|Client side request: Information not found. | Error : 404|RECORD|READ|OLDER 2.
record=2_7 product=15.0.2.7;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 1.|SAME
record=2_7 product=15.0.0.36;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 1.|SAME
record=2_3,2_7 product=15.0.1.0 packs=2_3,2_7;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 1.|SAME
record=2_7 product=15.0.1.0;ok yes;MATCHED|FOUND|FETCHED|RECORD|READ|DELETED|NEWER 1.
record=2_7 product=15.0.1.0 refuse=DeleteFileW-5;ok yes;MATCHED|FOUND|FETCHED|RECORD|READ|Not able to access Installer update file exists in local.|NEWER 1.
record=2_7 product=15.0.1.0 hold=record-3;ok yes;MATCHED|FOUND|FETCHED|RECORD|READ|Validating Installer update file exists in local.|Error : 32|NEWER 1.
record=2_3,2_7 packs=1_12,2_7,2_3;ok yes;MATCHED|FOUND|FETCHED|RECORD|READ|NEWER 1.
record=2_3,2_7 packs=1_12,2_7,2_3 product=15.0.2.7;ok no;MATCHED|FOUND|FETCHED|RECORD|READ|OLDER 1.|SAME
record=2_7 hold=record-0;ok yes;MATCHED|FOUND|FETCHED|RECORD|HELD|Read installer update file failed.|NEWER 2.
)";

/// "2_3,2_7" as the names of those packs, each between `before` and `after`.
std::string Packs(const std::wstring& numbers, const std::string& before, const std::string& after) {
  std::string text;
  for (const std::wstring& pack : Split(numbers, L',')) {
    if (!pack.empty()) text += before + "Varnexa15_0_" + support::Utf8(pack) + after;
  }
  return text;
}

/// What `setup` asks for besides the server; the hook goes with the row.
Hook Prepare(Scene& scene, std::map<std::wstring, std::wstring>& setup) {
  if (!setup.contains(L"product")) setup[L"product"] = L"15.0.2.5";
  if (!setup[L"product"].empty()) scene.machine.PlaceExecutable(setup[L"product"]);
  if (setup.contains(L"host")) scene.engine.UpdateLocation = setup[L"host"];
  if (setup.contains(L"address")) scene.engine.TagThree = setup[L"address"];
  if (setup.contains(L"gone")) support::RemoveTree(scene.machine.Temp());
  scene.run.UpdateLocUrlMode = setup.contains(L"url");
  if (setup.contains(L"record")) {
    support::WriteBytes(scene.machine.Record(), Packs(setup[L"record"], "", "") + " \r\n");
  }
  if (setup.contains(L"refuse")) return Refuse(setup[L"refuse"]);
  if (!setup.contains(L"hold")) return {};
  const auto hold = Split(setup[L"hold"], L'-');
  const std::wstring path = hold[0] == L"list" ? scene.machine.UpdateList() : scene.machine.Record();
  if (hold[0] == L"list") support::WriteBytes(path, "");
  return std::make_shared<support::ShareLock>(path, std::stoul(hold[1]));
}

}  // namespace

TEST_CASE("check: a step's text, code or flag is another's; a pack wrongly offered; a record lost") {
  for (const std::wstring& row : Split(kScenes, L'\n')) {
    if (row.empty()) continue;
    CAPTURE(support::Utf8(row));
    const auto columns = Split(row, L';');
    std::map<std::wstring, std::wstring> setup;
    for (const std::wstring& word : Split(columns[0], L' ')) {
      setup[word.substr(0, word.find(L'='))] = word.substr(word.find(L'=') + 1);
    }
    Scene scene;
    UpdateEngine& engine = scene.engine;
    const Hook hook = Prepare(scene, setup);
    const int status = setup.contains(L"status") ? std::stoi(setup[L"status"]) : 200;
    const std::wstring packs = setup.contains(L"packs") ? setup[L"packs"] : L"2_7";
    HttpServer server([&](const auto&) {
      if (setup.contains(L"late")) support::WriteBytes(scene.machine.Record(), Packs(setup[L"late"], "", ""));
      return Reply(status, "[Update Packs for Versions]\r\n" + Packs(packs, "[", "]\r\n"));
    });
    const auto results = Split(columns[1], L' ');
    engine.UpdateSections = {L"of", L"an_9_9", L"earlier_9_9"};
    engine.m_bUpdatesAvailable = scene.available_mirror = results[1] != L"yes";
    engine.CompareUpdates(scene.machine.ProductFolder() + L"\\Qrt.exe", L"15.0.2.5");
    CHECK_LOG(scene.run.LogText(), columns[2]);
    CHECK(engine.m_bCheckFailed == (results[0] != L"ok"));
    CHECK(engine.m_bNetworkError == (results[0] == L"network"));
    CHECK(engine.m_bUpdatesAvailable == (results[1] != L"no"));
    // The failure's entry is the error text, and a strange status stands there after a success.
    std::wstring error_text = results[0] != L"ok" ? L"old" : status != 200 ? L" Error : 500" : L"";
    for (const std::wstring& entry : expected::Log(columns[2])) {
      if (entry.starts_with(L" Error : ")) error_text = entry;
    }
    CHECK(engine.m_strErrorText == error_text);
    CHECK((scene.error_mirror == error_text || error_text == L"old"));
    CHECK((scene.failed_mirror == engine.m_bCheckFailed &&
           scene.available_mirror == engine.m_bUpdatesAvailable));
    server.Stop();
    if (error_text.ends_with(L"mismatch.")) CHECK(server.Connections() == 0);
    const bool there = GetFileAttributesW(scene.machine.Record().c_str()) != INVALID_FILE_ATTRIBUTES;
    CHECK(there == ((setup.contains(L"record") || setup.contains(L"late")) &&
                    columns[2].find(L"DELETED") == row.npos));
  }
}

TEST_CASE("exchange: a server that is down is not told from one that answers") {
  HttpServer server(Reply(200, expected::kListWithPack));
  server.Stop();
  Scene scene;
  scene.Exchange();
  CHECK(scene.engine.m_strErrorText.ends_with(L" Please check your network and permissions."));
  server.Start();
  scene.Exchange();
  CHECK_FALSE(scene.engine.m_bCheckFailed);
}

TEST_CASE("exchange: something else on the wire, an answer out of a cache, or a file with old remains") {
  Scene scene;
  std::string body = std::string(10000, ';') + "\r\n[a]\r\n";
  HttpServer server([&](const auto&) { return Reply(200, body, "Cache-Control: max-age=3600\r\n"); });
  DWORD flags = 0;
  const ImportHook<HttpOpenRequestW> open("HttpOpenRequestW", [&](auto... all) {
    flags = std::get<6>(std::tuple(all...));
    return open.original(all...);
  });
  scene.Exchange();
  CHECK(flags == (INTERNET_FLAG_RELOAD | INTERNET_FLAG_EXISTING_CONNECT));
  CHECK(support::ReadBytes(scene.machine.UpdateList()) == body);
  body = "[b]\r\n[c]\r\n";
  scene.Exchange();
  CHECK(support::ReadBytes(scene.machine.UpdateList()) == body);
  CHECK(scene.engine.UpdateSections == std::vector<std::wstring>{L"a", L"b", L"c"});
  REQUIRE(server.Requests().size() == 2);
  const auto request = server.Requests()[0];
  CHECK(request.head.starts_with("GET /patches/updates.ini HTTP/1."));
  CHECK(request.Header("Accept") == "text/*");
  CHECK(request.Header("User-Agent") == "agent");
  CHECK(request.Header("Host") == "updates.varnexa.example");
}

TEST_CASE("exchange: time-out not set on the session, or one that never or at once ends it") {
  for (const auto& [setting, applied] : {std::pair(30000, 30000u), {1, 1u}, {0, 60000u}, {-1000, 60000u}}) {
    Scene scene;
    HttpServer server(Reply(404, ""));
    scene.engine.TimeoutMs = setting;
    HINTERNET root = nullptr;
    DWORD seen = 0;
    ImportHook<InternetOpenW> open("InternetOpenW",
                                   [&](auto... all) { return root = open.original(all...); });
    ImportHook<InternetSetOptionW> set("InternetSetOptionW",
                                       [&](HINTERNET handle, DWORD option, void* value, DWORD) {
                                         if (handle == root && option == INTERNET_OPTION_RECEIVE_TIMEOUT)
                                           seen = *static_cast<DWORD*>(value);
                                         return TRUE;
                                       });
    scene.Exchange();
    CHECK(seen == applied);
  }
}

TEST_CASE("section names: a cut name taken for a pack, or a whole one at the limit lost") {
  const std::size_t cases[][3] = {{1, 1019, 2}, {1, 1020, 2}, {1, 1021, 1},
                                  {1, 5000, 1}, {1022, 1, 1}, {1023, 1, 0}};
  for (const auto& [first, second, names] : cases) {
    CAPTURE(first);
    CAPTURE(second);
    Scene scene;
    HttpServer server(
        Reply(200, "[" + std::string(first, 'a') + "]\n[" + std::string(second, 'b') + "]\n[c]\n"));
    scene.Exchange();
    REQUIRE(scene.engine.UpdateSections.size() == names);
    if (names == 2) CHECK(scene.engine.UpdateSections[1].size() == second);
  }
}
