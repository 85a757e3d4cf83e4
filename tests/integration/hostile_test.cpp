#include <doctest.h>

#include <windows.h>

#include <psapi.h>

#include <optional>

#include "log/system_log.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/text.h"
#include "sweep.h"
#include "update/check_patch.h"
#include "update/process_state.h"

namespace {

using support::HttpReply;
using support::Machine;

SIZE_T PeakMegabytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PeakPagefileUsage >> 20;
}

/// A whole run: what start-up decided, the check's flags, number of names and error text.
std::string Play() {
  RunState run;
  const bool check_updates = run.PrepareServerSettings();
  run.ResolveSettingsFile();
  g_nUpdateCheckCount = 1;
  const CCheckPatch check(run);
  SystemLog log;
  log.AppendText(run.LogText());
  log.OpenSystemLog();
  CHECK(log.PendingText().empty());
  return std::string(check_updates ? "checks " : "") + (check.m_bCheckFailed ? "failed " : "") +
         (check.m_bUpdatesAvailable ? "updates " : "") + std::to_string(check.UpdateSections.size()) +
         support::Utf8(check.m_strErrorText);
}

}  // namespace

TEST_CASE("an answer makes the check hang, eat memory or report what was not sent") {
  const std::string head = "HTTP/1.1 200 OK\r\n", line = "key=a value\r\n";
  std::string lines;
  while (lines.size() < 1 << 20) lines += line;
  const struct {
    HttpReply reply;
    const char* outcome;
  } cases[] = {{{}, "0 Error : 0"},
               {{head + "\r\n" + sweep::kServedList, 0, lines, 200}, "failed 0 Error : 223"}};
  for (const auto& c : cases) {
    CAPTURE(c.outcome);
    Machine machine;
    sweep::Furnish(machine);
    const support::HttpServer server(c.reply);
    CHECK(Play() == c.outcome);
    CHECK(PeakMegabytes() <= 64);
  }
}

TEST_CASE("settings that cannot be read, or that lie too deep, stop the check or are damaged") {
  const support::HttpServer server(support::Reply(200, sweep::kServedList));
  for (const char* state : {"folder", "held", "deep"}) {
    CAPTURE(state);
    const std::string_view is(state);
    Machine machine;
    sweep::Furnish(machine);
    const std::wstring file = machine.SettingsFile();
    std::optional<support::ShareLock> holder;
    if (is == "held") holder.emplace(file);
    if (is == "folder") DeleteFileW(file.c_str()), support::MakeFolder(file);
    if (is == "deep") {
      std::wstring documents = machine.Documents() + L"\\";
      documents.resize(250, L'd');
      support::MakeFolder(documents);
      RegSetKeyValueW(HKEY_CURRENT_USER,
                      L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                      L"Personal", REG_SZ, documents.c_str(), static_cast<DWORD>(documents.size() * 2 + 2));
    }
    CHECK(Play() == "checks updates 2");
    holder.reset();
    CHECK(support::ReadBytes(file).has_value() == (is != "folder"));
  }
}
