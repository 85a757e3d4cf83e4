#include <doctest.h>

#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <string>

#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "support/text.h"
#include "support/watchdog.h"
#include "update/check_patch.h"
#include "update/process_state.h"

using support::HttpReply;

static SIZE_T Peak() {
  PROCESS_MEMORY_COUNTERS c{};
  c.cb = sizeof c;
  K32GetProcessMemoryInfo(GetCurrentProcess(), &c, sizeof c);
  return c.PeakPagefileUsage / 1024;
}
static SIZE_T Now() {
  PROCESS_MEMORY_COUNTERS c{};
  c.cb = sizeof c;
  K32GetProcessMemoryInfo(GetCurrentProcess(), &c, sizeof c);
  return c.PagefileUsage / 1024;
}

TEST_CASE("explore") {
  support::AllowSeconds(500);
  const std::string list = "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n";
  const std::string ok = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n";
  auto raw = [](std::string b) {
    HttpReply r;
    r.bytes = b;
    return r;
  };
  auto redirect = [&](std::string to) {
    return raw("HTTP/1.1 302 F\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " + to + "\r\n\r\n");
  };
  std::string many = "[Update Packs for Versions]\r\n";
  for (int i = 0; i < 100000; ++i) many += "[V15_0_1_" + std::to_string(i) + "]\r\nA=1\r\n";
  std::string u16 = "\xff\xfe", u16n;
  for (char c : list) {
    u16 += c;
    u16 += '\0';
    u16n += c;
    u16n += '\0';
  }
  HttpReply silent;
  silent.bytes = "";
  silent.pause_ms = 3000;
  HttpReply slow = support::Reply(200, list);
  slow.piece = 1;
  slow.pause_ms = 10;
  HttpReply cut = raw(ok + "Content-Length: 5000\r\n\r\n" + list);
  HttpReply resetm = cut;
  resetm.end = HttpReply::End::reset;
  HttpReply endlessh = raw(ok);
  endlessh.tail = "X-Filler: " + std::string(1000, 'a') + "\r\n";
  endlessh.tail_count = 16 * 1024;
  HttpReply endlessb = raw(ok + "\r\n" + list);
  endlessb.tail = std::string(1 << 20, 'x');
  endlessb.tail_count = 200;
  HttpReply endlessl = raw(ok + "\r\n" + list);
  for (int i = 0; i < 65536 / 16; ++i) endlessl.tail += "key=some value\r\n";
  endlessl.tail_count = 3200;
  HttpReply hold = raw(ok + "Content-Length: 5000\r\n\r\n" + list);
  hold.piece = 100000;
  hold.end = HttpReply::End::hold;
  struct {
    const char* n;
    HttpReply r;
  } rows[] = {
      {"silent", silent},
      {"slow", slow},
      {"header 1MiB", raw(ok + "X: " + std::string(1 << 20, 'a') +
                          "\r\nContent-Length: " + std::to_string(list.size()) + "\r\n\r\n" + list)},
      {"endless headers 16MiB", endlessh},
      {"cut", cut},
      {"reset", resetm},
      {"chunked", raw(ok + "Transfer-Encoding: chunked\r\n\r\n1b\r\n[Update Packs for "
                           "Versions]\r\n14\r\n\r\n[Varnexa15_0_2_7]\r\n\r\n0\r\n\r\n")},
      {"bad chunk", raw(ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\n" + list)},
      {"huge chunk", raw(ok + "Transfer-Encoding: chunked\r\n\r\nffffffff\r\n" + list)},
      {"neg length", raw(ok + "Content-Length: -1\r\n\r\n" + list)},
      {"huge length", raw(ok + "Content-Length: 99999999999999999999\r\n\r\n" + list)},
      {"gzip", raw(ok + "Content-Encoding: gzip\r\nContent-Length: " + std::to_string(list.size()) +
                   "\r\n\r\n" + list)},
      {"redir self", redirect("/patches/updates.ini")},
      {"redir other", redirect("http://www.example.com/x")},
      {"redir ftp", redirect("file:///c:/windows/win.ini")},
      {"0.9", raw(list)},
      {"100", raw("HTTP/1.1 100 Continue\r\n\r\n" + ok + "Content-Length: " + std::to_string(list.size()) +
                  "\r\n\r\n" + list)},
      {"204", raw("HTTP/1.1 204 No\r\n\r\n")},
      {"206", support::Reply(206, list)},
      {"301", support::Reply(301, list)},
      {"999", support::Reply(999, list)},
      {"status 99999999999", raw("HTTP/1.1 99999999999 X\r\nContent-Length: 0\r\n\r\n")},
      {"empty", raw("")},
      {"utf16", support::Reply(200, u16)},
      {"utf16n", support::Reply(200, u16n)},
      {"nul", support::Reply(200, std::string("[Update\0Packs]\r\n[Varn\0exa15_0_2_7]\r\n", 36))},
      {"100000", support::Reply(200, many)},
      {"64k", support::Reply(200, "[Update Packs for Versions]\r\n[" + std::string(65536, 'a') +
                                      "_9_9]\r\n[V15_0_2_7]\r\n")},
      {"no newline", support::Reply(200, list.substr(0, list.size() - 2))},
      {"endless lines 200MiB", endlessl},
      {"endless body 200MiB", endlessb},
  };
  for (auto& row : rows) {
    support::Machine m;
    m.Install(support::Layout::one, m.DefaultProduct());
    m.PlaceExecutable(L"15.0.1.0");
    m.WriteSettings("TIMEOUT=1\r\n");
    support::HttpServer server(row.r);
    RunState run;
    run.SettingsFilePath = m.SettingsFile();
    g_nUpdateCheckCount = 1;
    ULONGLONG t = GetTickCount64();
    SIZE_T before = Now();
    CCheckPatch c(run);
    std::wstring log = run.LogText();
    auto p = log.find(L"matched");
    std::string l = support::Utf8(log.substr(p));
    for (auto& ch : l)
      if (ch == '\n') ch = '|';
    auto f = support::ReadBytes(m.UpdateList());
    printf("== %s: %ums mem %uK->%uK peak %uK  f%d n%d u%d '%s' sections %u file %d conn %u\n   %s\n", row.n,
           (unsigned)(GetTickCount64() - t), (unsigned)before, (unsigned)Now(), (unsigned)Peak(),
           c.m_bCheckFailed, c.m_bNetworkError, c.m_bUpdatesAvailable,
           support::Utf8(c.m_strErrorText).c_str(), (unsigned)c.UpdateSections.size(),
           f ? (int)f->size() : -1, server.Connections(), l.c_str());
    fflush(stdout);
  }
}
