// Measures whole runs of the utility: time from start to end or to the first idle moment of its window, and
// the memory that it took at most. tavrel_bench [ROUNDS [PROGRAM…]]; other builds of the utility run in the
// same rounds, turn by turn, so that whatever else the machine does falls on all of them alike.
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "acceptance/driver.h"
#include "platform/handles.h"
#include "support/text.h"

namespace {

using support::HttpServer;
using support::Reply;

constexpr DWORD kLongestRunMs = 60000;
constexpr unsigned kRounds = 20;

struct Scene {
  const char* name;
  const wchar_t* arguments;
  const char* settings;
  std::string list;  ///< the body that the server sends
  bool opens_window = false;
};

struct Measure {
  std::vector<double> milliseconds;
  SIZE_T bytes = 0;  ///< private memory at most, over all rounds
};

std::string ListOf(unsigned packs) {
  std::string list = "[Update Packs for Versions]\r\n";
  for (unsigned i = 0; i < packs; ++i) list += "[Varnexa15_0_1_" + std::to_string(i) + "]\r\nSize=1\r\n";
  return list;
}

double Now() {
  LARGE_INTEGER count, frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) * 1000.0 / static_cast<double>(frequency.QuadPart);
}

/// One run; false when it could not be started or did not end in time.
bool Play(const std::wstring& program, const Scene& scene, Measure& measure) {
  std::wstring command = L"\"" + program + L"\" " + scene.arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION created{};
  const double began = Now();
  if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                      &created)) {
    return false;
  }
  const platform::UniqueKernelHandle thread(created.hThread), process(created.hProcess);
  PROCESS_MEMORY_COUNTERS counters{};
  const auto look = [&] {
    if (K32GetProcessMemoryInfo(process.get(), &counters, sizeof counters))
      measure.bytes = std::max(measure.bytes, counters.PeakPagefileUsage);
  };
  bool ended = scene.opens_window && WaitForInputIdle(process.get(), kLongestRunMs) == 0;
  if (ended) look();
  // What a process took can be asked only while it runs.
  while (!ended && Now() - began < kLongestRunMs) {
    look();
    ended = WaitForSingleObject(process.get(), 1) == WAIT_OBJECT_0;
  }
  if (ended) measure.milliseconds.push_back(Now() - began);
  TerminateProcess(process.get(), 0);
  WaitForSingleObject(process.get(), kLongestRunMs);
  return ended;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  const unsigned rounds = count > 1 ? std::wcstoul(arguments[1], nullptr, 10) : kRounds;
  Stage stage;
  std::vector<std::wstring> programs{stage.program};
  for (int i = 2; i < count; ++i) programs.emplace_back(arguments[i]);
  stage.PlaceExecutable(L"15.0.2.7");  // newer than every pack: a check has nothing to tell
  std::string body;
  const HttpServer server([&body](const auto&) { return Reply(200, body); });
  const Scene scenes[] = {{"updates off", L"2", "CHECKUPDATES=FALSE\r\n", ""},
                          {"check, 1 pack", L"2", "", ListOf(1)},
                          {"check, 100,000 packs", L"2", "", ListOf(100000)},
                          {"check, 30 MiB", L"2", "", ListOf(1) + std::string(30 << 20, ';')},
                          {"window", L"", "", ListOf(1), true}};
  std::printf("%-22s %-28s %8s %8s %8s\n", "scene", "program", "median", "longest", "memory");
  for (const Scene& scene : scenes) {
    body = scene.list;
    stage.WriteSettings(scene.settings);
    std::vector<Measure> measures(programs.size());
    for (unsigned round = 0; round < rounds; ++round) {
      for (std::size_t i = 0; i < programs.size(); ++i) {
        if (Play(programs[i], scene, measures[i])) continue;
        std::fprintf(stderr, "%s: a run did not end\n", scene.name);
        return 1;
      }
    }
    for (std::size_t i = 0; i < programs.size(); ++i) {
      std::vector<double>& times = measures[i].milliseconds;
      std::sort(times.begin(), times.end());
      std::printf("%-22s %-28s %5.0f ms %5.0f ms %4u KiB\n", scene.name,
                  i == 0 ? "this build" : support::Utf8(arguments[i + 1]).c_str(), times[times.size() / 2],
                  times.back(), static_cast<unsigned>(measures[i].bytes >> 10));
    }
  }
  return 0;
}
