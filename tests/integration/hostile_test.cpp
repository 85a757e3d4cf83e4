#include <doctest.h>

#include <windows.h>

#include <psapi.h>

#include "log/system_log.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "support/text.h"
#include "support/watchdog.h"
#include "update/check_patch.h"
#include "update/process_state.h"

namespace {

using support::HttpReply;
using support::Machine;
using support::Reply;
using support::WriteBytes;

const std::string kList = "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n";
constexpr char kChecksNot[] = "CHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n";

SIZE_T PeakMegabytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PeakPagefileUsage >> 20;
}

/// A whole run: what start-up decided, the check's flags, number of names and error text, its last word, and
/// whether the log file has it all.
std::string Play() {
  RunState run;
  const bool check_updates = run.PrepareServerSettings();
  run.ResolveSettingsFile();
  g_nUpdateCheckCount = 1;
  const CCheckPatch check(run);
  SystemLog log;
  log.AppendText(run.LogText());
  log.OpenSystemLog();
  const std::size_t end = run.LogText().rfind(L"\n\n=====");
  return std::string(check_updates ? "checks " : "") + (check.m_bCheckFailed ? "failed " : "") +
         (check.m_bNetworkError ? "network " : "") + (check.m_bUpdatesAvailable ? "updates " : "") +
         std::to_string(check.UpdateSections.size()) + support::Utf8(check.m_strErrorText) + " ..." +
         support::Utf8(run.LogText().substr(end - 2, 2)) + (log.PendingText().empty() ? "" : " unlogged");
}

void Furnish(Machine& machine) {
  machine.Install(support::Layout::one, machine.DefaultProduct());
  machine.PlaceExecutable(L"15.0.1.0");
  machine.WriteSettings(kChecksNot);
  support::MakeFolder(machine.LogFolder());
}

std::string Repeat(const std::string& text, unsigned count) {
  std::string result;
  for (unsigned i = 0; i < count; ++i) result += text;
  return result;
}

std::string Utf16(const std::string& text) {
  std::string result;
  for (const char c : text) result.append({c, '\0'});
  return result;
}

void MoveDocuments(Machine& machine, const std::wstring& name) {
  const std::wstring path = machine.Documents() + L"\\" + name;
  support::MakeFolder(path);
  RegSetKeyValueW(HKEY_CURRENT_USER,
                  L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders", L"Personal",
                  REG_SZ, path.c_str(), static_cast<DWORD>(path.size() * 2 + 2));
}

void SetFact(std::wstring (*key)(support::Layout), const wchar_t* name, const std::wstring& text) {
  support::SetRegistryText(key(support::Layout::one), name, text);
}

__time64_t clock_now;
__time64_t Clock(__time64_t* /*copy*/) {
  return clock_now;
}

}  // namespace

TEST_CASE("an answer makes the check crash, hang, eat memory or report what was not sent") {
  using enum HttpReply::End;
  const auto raw = [](std::string bytes, HttpReply::End end = close) {
    return HttpReply{bytes, 0, 0, "", 0, end};
  };
  const auto slow = [](HttpReply reply, unsigned pause) {
    return reply.piece = 1, reply.pause_ms = pause, reply;
  };
  const auto endless = [](std::string bytes, const std::string& tail, unsigned count) {
    return HttpReply{std::move(bytes), 0, 0, tail, count, close};
  };
  const std::string ok = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string length = "Content-Length: " + std::to_string(kList.size()) + "\r\n\r\n";
  const std::string moved = "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\n";
  std::string packs = "[Update Packs for Versions]\r\n";
  for (int i = 1; i <= 100000; ++i) packs += "[V15_0_2_" + std::to_string(i) + "]\r\nA=1\r\n";
  const struct {
    const char* name;
    HttpReply reply;
    const char* expected;
    unsigned times = 1000000;  ///< afterwards the list is served
  } cases[] = {
      {"closed after a second without an answer", slow(raw(""), 1000), "0 Error : 0 ...3."},
      {"a byte at a time", slow(Reply(200, kList), 10), "updates 2 ...3."},
      {"header of 1 MiB", raw(ok + "X: " + std::string(1 << 20, 'a') + "\r\n" + length + kList),
       "updates 2 ...3."},
      {"headers without end", endless(ok, "X-Filler: " + std::string(1000, 'a') + "\r\n", 200), "0 ...3."},
      {"cut short of its length", raw(ok + "Content-Length: 5000\r\n\r\n" + kList), "updates 2 ...3."},
      {"reset in mid-body", raw(ok + "Content-Length: 5000\r\n\r\n" + kList, reset), "updates 2 ...3."},
      {"chunked", raw(chunked + "30\r\n" + kList + "\r\n0\r\n\r\n"), "updates 2 ...3."},
      {"bad chunk length", raw(chunked + "zz\r\n" + kList), "0 ...3."},
      {"chunk of 4 GiB", raw(chunked + "ffffffff\r\n" + kList), "updates 2 ...3."},
      {"length beyond 64 bits", raw(ok + "Content-Length: 99999999999999999999\r\n\r\n" + kList),
       "updates 2 ...3."},
      {"gzip not asked for", raw(ok + "Content-Encoding: gzip\r\n" + length + kList), "updates 2 ...3."},
      {"redirected to itself", raw(moved + "Location: /patches/updates.ini\r\n\r\n"), "updates 2 ...3.", 20},
      {"redirected to a host", raw(moved + "Location: http://www.example.com/x\r\n\r\n"), "updates 2 ...3.",
       1},
      {"redirected to a file", raw(moved + "Location: file:///c:/windows/win.ini\r\n\r\n"),
       "0 Error : 302 ...3."},
      {"302 without place", raw(moved + "\r\n"), "0 Error : 302 ...3."},
      {"301 without place", Reply(301, kList), "updates 2 Error : 301 ...3."},
      {"HTTP/0.9", raw(kList), "1 ...3."},
      {"100 first", raw("HTTP/1.1 100 Continue\r\n\r\n" + ok + length + kList), "updates 2 ...3."},
      {"204", raw("HTTP/1.1 204 None\r\n\r\n"), "0 Error : 204 ...3."},
      {"206", Reply(206, kList), "updates 2 Error : 206 ...3."},
      {"999", Reply(999, kList), "updates 2 Error : 999 ...3."},
      {"UTF-16 with mark", Reply(200, "\xff\xfe" + Utf16(kList)), "updates 2 ...3."},
      {"UTF-16 without mark", Reply(200, Utf16(kList)), "0 ...3."},
      {"nulls", Reply(200, std::string("[Update\0Packs]\r\n[Varnexa\0_0_2_7]\r\n", 34)), "2 ...n."},
      {"100,000 sections", Reply(200, packs), "updates 92 ...3."},
      {"a name of 64 KiB", Reply(200, "[U]\r\n[" + std::string(65536, 'a') + "_2_9]\r\n[V15_0_2_7]\r\n"),
       "1 ...3."},
      {"no newline at the end", Reply(200, kList.substr(0, kList.size() - 2)), "updates 2 ...3."},
      {"200 MiB of lines", endless(ok + "\r\n", Repeat("key=a value\r\n", 81920), 200),
       "failed 0 Error : 223 ...3."},
      {"200 MiB of one line", endless(ok + "\r\n", std::string(1 << 20, 'x'), 200),
       "failed 0 Error : 223 ...3."}};
  for (const auto& row : cases) {
    CAPTURE(row.name);
    Machine machine;
    Furnish(machine);
    unsigned served = 0;
    const support::HttpServer server(
        [&](const auto&) { return served++ < row.times ? row.reply : Reply(200, kList); });
    CHECK(Play() == row.expected);
    CHECK(PeakMegabytes() <= 64);
  }
}

TEST_CASE("a machine in disorder stops the check, or the check damages what it finds") {
  support::AllowSeconds(120);
  const struct {
    const char* name;
    void (*arrange)(Machine&);
    const char* expected;
  } cases[] = {
      {"settings: a folder",
       [](Machine& m) { DeleteFileW(m.SettingsFile().c_str()), support::MakeFolder(m.SettingsFile()); },
       "checks updates 2 ...3."},
      {"settings: 10 MiB", [](Machine& m) { m.WriteSettings(Repeat("; filler\r\n", 1 << 20) + kChecksNot); },
       "updates 2 ...3."},
      {"settings: UTF-16",
       [](Machine& m) {
         WriteBytes(m.SettingsFile(), "\xff\xfe" + Utf16(std::string("[KORSA_URL]\r\n") + kChecksNot));
       },
       "updates 2 ...3."},
      {"settings: nulls", [](Machine& m) { m.WriteSettings(std::string("A=\0\0\0\r\n", 7) + kChecksNot); },
       "updates 2 ...3."},
      {"settings: their section twice",
       [](Machine& m) { m.WriteSettings(std::string(kChecksNot) + "[KORSA_URL]\r\nCHECKUPDATES=TRUE\r\n"); },
       "updates 2 ...3."},
      {"Documents: missing", [](Machine& m) { support::RemoveTree(m.Documents()); },
       "checks updates 2 ...3."},
      {"Documents: a file",
       [](Machine& m) { support::RemoveTree(m.Documents()), WriteBytes(m.Documents(), "1"); },
       "checks updates 2 ...3."},
      {"Documents: 250 characters",
       [](Machine& m) { MoveDocuments(m, std::wstring(249 - m.Documents().size(), L'd')); },
       "checks updates 2 ...3."},
      {"Documents: other letters", [](Machine& m) { MoveDocuments(m, L"\u6587\u0434\u03b1"); },
       "checks updates 2 ...3."},
      {"temporary folder: missing", [](Machine& m) { support::RemoveTree(m.Temp()); },
       "failed 0 Error : 3 ...3."},
      {"list: a folder", [](Machine& m) { support::MakeFolder(m.UpdateList()); }, "failed 0 Error : 5 ...3."},
      {"icon: with a number",
       [](Machine& m) { SetFact(support::UninstallKey, L"DisplayIcon", m.ProductFolder() + L"\\Qrt.exe,0"); },
       "updates 2 ...3."},
      {"icon: in quotes",
       [](Machine& m) {
         SetFact(support::UninstallKey, L"DisplayIcon", L"\"" + m.ProductFolder() + L"\\Qrt.exe\"");
       },
       "updates 2 ...3."},
      {"icon: no folder", [](Machine&) { SetFact(support::UninstallKey, L"DisplayIcon", L"Qrt.exe"); },
       "updates 2 ...3."},
      {"install path: backslash",
       [](Machine& m) { SetFact(support::MakerKey, L"Installpath", m.ProductFolder() + L"\\"); },
       "updates 2 ...3."},
      {"install path: quotes",
       [](Machine& m) { SetFact(support::MakerKey, L"Installpath", L"\"" + m.ProductFolder() + L"\""); },
       "2 ...d."},
      {"record: 20 MiB", [](Machine& m) { WriteBytes(m.Record(), std::string(20 << 20, 'x')); },
       "updates 2 ...1."},
      {"record: a folder", [](Machine& m) { support::MakeFolder(m.Record()); }, "updates 2 ...2."},
      {"record: nulls", [](Machine& m) { WriteBytes(m.Record(), std::string("\0_7\0", 4)); },
       "updates 2 ...1."},
      {"executable: cut", [](Machine& m) { WriteBytes(m.ProductFolder() + L"\\Qrt.exe", "MZ"); }, "2 ...d."},
      {"logs: 2,000",
       [](Machine& m) {
         for (int i = 0; i < 2000; ++i) {
           WriteBytes(m.LogFolder() + L"\\QRT_15_SystemTavrel_" + std::to_wstring(i) + L".log", "");
         }
       },
       "updates 2 ...3."},
      {"log folder: a file",
       [](Machine& m) { support::RemoveTree(m.LogFolder()), WriteBytes(m.LogFolder(), "1"); },
       "updates 2 ...3. unlogged"},
      {"clock: 1970", [](Machine&) { clock_now = 0; }, "updates 2 ...3."},
      {"clock: 2100", [](Machine&) { clock_now = 4102444800; }, "updates 2 ...3."},
  };
  const support::HttpServer server(Reply(200, kList));
  void** const slot = support::FindImport("_time64");
  for (const auto& row : cases) {
    CAPTURE(row.name);
    Machine machine;
    Furnish(machine);
    clock_now = -1;
    row.arrange(machine);
    const auto settings = support::ReadBytes(machine.SettingsFile());
    void* const clock =
        support::ExchangeImport(slot, clock_now < 0 ? *slot : reinterpret_cast<void*>(&Clock));
    CHECK(Play() == row.expected);
    support::ExchangeImport(slot, clock);
    CHECK(support::ReadBytes(machine.SettingsFile()) == settings);
  }
}
