#include <doctest.h>

#include <windows.h>

#include <wininet.h>

#include <future>
#include <regex>
#include <tuple>

#include "expected.h"
#include "platform/sharing.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

using support::HttpServer;
using support::ImportHook;
using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Reply;
using support::Utf8;

namespace {

using Setup = std::map<std::wstring, std::wstring>;

/// The list of an earlier check, with a pack that a check must not find.
const std::string kOldList = std::string(999, '\n') + "[Varnexa15_0_9_9]\r\n";
/// Each word that a set-up may have, with its values.
const std::wregex kWord(
    L"(address|settings|product|packs|record|late|then|build|refuse)=.*|status=\\d{3}|layout=two|"
    L"missing=(DisplayVersion|DisplayIcon|URLUpdateInfo|Installpath)|silent=(status|body)|"
    L"endless|competing|start-up|interactive");

/// The words of a row, and the usual values of others.
Setup Words(const std::wstring& row) {
  Setup setup{{L"address", L"http://updates.varnexa.example/patches/updates.ini"},
              {L"product", L"15.0.2.5"},
              {L"packs", L"2_7"},
              {L"status", L"200"}};
  for (const std::wstring& word : support::Split(row)) {
    if (!std::regex_match(word, kWord)) Refuse("unknown word of a set-up", word);
    const std::size_t equals = word.find(L'=');
    setup[word.substr(0, equals)] = equals == word.npos ? L"" : word.substr(equals + 1);
  }
  setup.try_emplace(L"build", setup[L"product"]);
  return setup;
}

std::string Results(bool failed, bool available, const std::wstring& error_text) {
  return (failed ? "failed" : "ok") + std::string(available ? " yes" : " no") + Utf8(error_text);
}

std::string Mirrors() {
  return Results(g_bCheckFailed, g_bUpdatesAvailable, g_strPatchErrorText);
}

/// A process before its first check. The mirrors hold results that a check must change or keep.
struct Process {
  const bool interactive;
  RunState run;
  SheetUpdateCheck sheet{run};
  std::wstring icon, product_version, warnings;

  Process(bool is_interactive, bool available_before) : interactive(is_interactive) {
    g_nUpdateCheckCount = 0;
    platform::g_nWaitLeftMs = 1000;
    g_bUpdatesAvailable = available_before;
    g_bCheckFailed = true;
    g_bProductInstalled = false;
    g_strPatchErrorText = L" old";
    run.WarnUser = [this](std::wstring_view text) { warnings += text; };
    run.ResolveSettingsFile();
    run.WriteRunHeader();
    sheet.WriteRegularRunHeader();
  }
  const std::wstring& Log() const { return interactive ? sheet.SheetLogText() : run.LogText(); }
  /// The log behind the header.
  std::wstring Entries() const { return Log().substr(Log().find(L"=========== Registered")); }
  std::int32_t Checks() const { return interactive ? sheet.SheetCheckCount : g_nUpdateCheckCount; }

  /// Makes a check and returns its results in the table's form.
  std::string Check() {
    if (interactive) {
      sheet.RunUpdateCheck();
      icon = sheet.SheetTagTwo;
      return Results(sheet.SheetCheckFailed, sheet.SheetUpdatesAvailable, sheet.SheetErrorText);
    }
    const CCheckPatch check(run);
    CHECK(Log().ends_with(check.MessageText() + L"\n\n"));
    icon = check.TagTwo;
    product_version = check.ProductFileVersion;
    return (check.m_bNetworkError ? "network " : "") +
           Results(check.m_bCheckFailed, check.m_bUpdatesAvailable, check.m_strErrorText);
  }
};

/// "2_3,2_7" as the names of those packs, each between `before` and `after`.
std::string Packs(const std::wstring& numbers, const std::string& before, const std::string& after) {
  std::string text;
  for (const std::wstring& pack : support::Split(numbers, L','))
    text += before + "Varnexa15_0_" + Utf8(pack) + after;
  return text;
}

void Prepare(Machine& machine, Setup& setup) {
  const Layout layout = setup.contains(L"layout") ? Layout::two : Layout::one;
  machine.Install(layout, setup[L"address"]);
  for (const std::wstring& key : {support::MakerKey(layout), support::UninstallKey(layout)}) {
    support::RemoveRegistryValue(key, setup[L"missing"].c_str());
  }
  if (!setup[L"product"].empty()) machine.PlaceExecutable(setup[L"product"]);
  machine.WriteSettings("IGNORE_PATCH_ERROR=maybe\r\n" + Utf8(setup[L"settings"]) + "\r\n");
  if (setup.contains(L"record")) {
    support::WriteBytes(machine.Record(), Packs(setup[L"record"], "", "") + " \r\n");
  }
  support::WriteBytes(machine.UpdateList(), kOldList);
}

std::wstring WholeLog(bool interactive, const Row& row) {
  const std::wstring reading = row[4].empty() ? L"MODE ONE|TAG ONE|TAG TWO|TAG THREE" : row[4];
  std::wstring log = L"START|" + reading + L"|END|UPDATES|" + row[3] + L"|UPDATES END";
  // The check at start-up warns in a box.
  if (!interactive) return std::regex_replace(log, std::wregex(L"WARNED"), L"");
  log = std::regex_replace(log, std::wregex(L"MODE \\w+"), L"$&|VERSION");
  return std::regex_replace(log, std::wregex(L"RECORD|DELETED"), L"INTERACTIVE $&");
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

/// Calls of the network library that the server does not see.
struct Asked {
  DWORD flags = 0;
  bool anonymous = false;  ///< the request gives no credentials to the server
  bool stores_cookies = true;
  std::map<DWORD, DWORD> timeouts;  ///< by the type of the handle, in milliseconds
  const ImportHook<HttpOpenRequestW> open{"HttpOpenRequestW", [this](auto... all) {
                                            flags = std::get<6>(std::tuple(all...));
                                            return open.original(all...);
                                          }};
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

/// What a check leaves outside its log: the settings, the record, and what it asked of the server.
void CheckTraces(const Process& process, const Machine& machine, Setup& setup, const Row& row,
                 const HttpServer& server, Asked& asked) {
  const std::string settings = ReadBytes(machine.SettingsFile()).value_or("");
  CHECK((settings.find("IGNORE_PATCH_ERROR=maybe") != settings.npos) == process.interactive);
  const bool record_there = GetFileAttributesW(machine.Record().c_str()) != INVALID_FILE_ATTRIBUTES;
  CHECK(record_there ==
        ((setup.contains(L"record") || setup.contains(L"late")) && row[3].find(L"DELETED") == row[3].npos));
  // A check without the mutex leaves the shared list unchanged and no other file.
  if (setup.contains(L"competing")) {
    CHECK(ReadBytes(machine.UpdateList()) == kOldList);
    CHECK(support::FileNames(machine.Temp()).size() == 1);
  }
  const bool asks = setup[L"missing"].empty() && row[3].find(L"MISMATCH") == row[3].npos;
  CHECK((asks || server.Connections() == 0));
  CHECK(server.Requests().size() <= static_cast<std::size_t>(process.Checks()));
  const DWORD timeout = setup[L"settings"] == L"TIMEOUT=1" ? 1000 : 60000;
  for (const std::string& request : server.Requests()) {
    CHECK(asked.flags == (INTERNET_FLAG_RELOAD | INTERNET_FLAG_EXISTING_CONNECT));
    CHECK((asked.anonymous && !asked.stores_cookies));
    CHECK(asked.timeouts[INTERNET_HANDLE_TYPE_INTERNET] == timeout);
    CHECK(asked.timeouts[INTERNET_HANDLE_TYPE_CONNECT_HTTP] == timeout);
    const auto has = [&](const char* text) { return request.find(text) != request.npos; };
    CHECK(request.starts_with("GET /patches/updates.ini HTTP/1."));
    CHECK(has("\r\nAccept: text/*\r\n"));
    CHECK(has(process.interactive ? "\r\nUser-Agent: " : "\r\nUser-Agent: QRT_15_TavrelUtility\r\n") ==
          !process.interactive);
    CHECK(has("\r\nHost: updates.varnexa.example\r\n"));
  }
}

/// A second check of the process; with "then" after another version was registered.
void CheckAgain(Process& process, Setup& setup, Row row) {
  const bool other = setup.contains(L"then");
  if (other) support::SetRegistryText(support::MakerKey(Layout::one), L"Version", setup[L"then"]);
  const std::wstring first = WholeLog(process.interactive, row);
  row[3] = row[5];
  CHECK(process.Check() == (other ? "ok no" : Utf8(row[1])));
  CHECK_LOG(process.Entries(), first + L"|Product Updates Retry Attempted...|" +
                                   (other ? row[5] : WholeLog(process.interactive, row)));
  CHECK(process.product_version.empty());
  CHECK(g_bProductInstalled == (process.interactive && !other));
  CHECK((process.sheet.SheetTagOne + process.sheet.SheetInstallPath).empty() ==
        (other || !process.interactive));
}

void RunRow(bool interactive, const Row& row) {
  Setup setup = Words(row[0]);
  if (setup.contains(interactive ? L"start-up" : L"interactive")) return;
  INFO((interactive ? "sheet: " : "start-up: "), Utf8(row[0]));
  Machine machine;
  Prepare(machine, setup);
  HttpServer server([&] {
    if (setup.contains(L"late")) support::WriteBytes(machine.Record(), Packs(setup.at(L"late"), "", ""));
    auto reply = Reply(std::stoi(setup.at(L"status")),
                       "[Update Packs for Versions]\r\n" + Packs(setup.at(L"packs"), "[", "]\r\n"));
    if (setup.contains(L"endless")) reply = {"HTTP/1.1 200 OK\r\n\r\n", 0, std::string(1 << 20, '\n')};
    reply.silent = setup.contains(L"silent");
    if (reply.silent) reply.bytes.resize(setup.at(L"silent") == L"body" ? reply.bytes.size() - 1 : 0);
    return reply;
  });
  Process process(interactive, row[1].find(L"yes") == row[1].npos);
  const std::string before = Mirrors();
  Asked asked;
  const auto obstacle = Obstruct(setup[L"refuse"], machine.Record());
  const std::string results = Utf8(row[1]);
  const std::string plain = results.substr(results.starts_with("network ") ? 8 : 0);
  std::optional<CompetingUtility> competing;
  if (setup.contains(L"competing")) competing.emplace();
  CHECK(process.Check() == (interactive ? plain : results));
  CHECK((platform::g_nWaitLeftMs < platform::kWaitMs) ==
        (setup.contains(L"competing") || setup[L"refuse"].starts_with(L"held")));
  competing.reset();
  CHECK_LOG(process.Entries(), WholeLog(interactive, row));
  CHECK(process.Log().find(L"Build Version : " + setup[L"build"] + L"\n\n") != std::wstring::npos);
  CHECK(process.warnings.empty() == (interactive || setup[L"missing"].empty()));
  CHECK((setup[L"missing"] == L"DisplayIcon" || process.icon == machine.ProductFolder() + L"\\Qrt.exe"));
  CHECK(process.product_version == (interactive ? L"" : setup[L"build"]));
  CHECK(g_bProductInstalled == interactive);
  if (!row[5].empty()) CheckAgain(process, setup, row);
  CHECK(Mirrors() == (interactive ? before : row[2].empty() ? plain : Utf8(row[2])));
  CHECK((interactive ? g_nUpdateCheckCount : process.sheet.SheetCheckCount) == 0);
  CHECK(process.Checks() == (row[5].empty() || setup.contains(L"then") ? 1 : 2));
  CHECK(ReadBytes(machine.UpdateList()).value_or("").size() <= 32 << 20);
  server.Stop();
  CheckTraces(process, machine, setup, row, server, asked);
  // After a start-up check there is no interactive one.
  const std::wstring log = process.Log();
  g_nUpdateCheckCount = 1;
  if (interactive) process.Check();
  CHECK(process.Log() == log);
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
Outcome CheckWith(std::vector<support::HttpReply> replies) {
  Machine machine;
  machine.Install(Layout::one);
  machine.PlaceExecutable(L"15.0.2.5");
  machine.WriteSettings("TIMEOUT=2\r\n");
  HttpServer server([&] {
    const support::HttpReply reply = replies.front();
    if (replies.size() > 1) replies.erase(replies.begin());
    return reply;
  });
  const std::string results = Process(false, false).Check();
  server.Stop();
  return {results, server.Requests().size(), ReadBytes(machine.UpdateList()).value_or("").size()};
}

}  // namespace

TEST_CASE("a server that sends byte by byte or redirects without end cannot keep the check") {
  const support::HttpReply list = Reply(200, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n");
  support::HttpReply elsewhere{.bytes = "HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n",
                               .pause_ms = 10};
  const std::string header_time_out =
      support::WineVersion() == nullptr ? "network failed no Error : 12002" : "failed no Error : 12030";

  std::vector<support::HttpReply> redirections(40, elsewhere);
  redirections.push_back(list);
  Outcome outcome = CheckWith(redirections);
  CHECK(outcome.results == header_time_out);
  CHECK(outcome.requests <= 12);

  const FastClock clock;
  support::HttpReply dripping{.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n",
                              .tail = "\n",
                              .tail_pause_ms = 10,
                              .tail_ms = 3000};
  outcome = CheckWith({dripping});
  CHECK(outcome.results == "network failed no Error : 12002");
  CHECK(outcome.list_bytes > 0);  // It was read while it came.
  elsewhere.pause_ms = 100;
  redirections.assign(9, elsewhere);
  redirections.push_back(list);
  outcome = CheckWith(redirections);
  CHECK(outcome.results == header_time_out);
  CHECK(outcome.requests < 10);
}

TEST_CASE("check: entries, flags, mirrors, files and requests are those of its set-up") {
  for (Row row : support::Rows("integration/checks.txt", 4, 6)) {
    row.resize(6);
    for (const bool interactive : {false, true}) RunRow(interactive, row);
  }
}
