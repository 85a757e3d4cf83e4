// Measures whole runs.
//
// tavrel_bench ROUNDS [PROGRAM…] measures the utility, the floors and the other programs in each round, in
// rotating order, so that other load on the machine affects all of them equally. It prints one line of comma
// separated values for each measurement:
//   kind,scene,x,program,round,milliseconds,processor milliseconds,KiB
// "scene" and "growth" rows are whole runs, "retry" rows one check of many in one window, "facts" rows a
// program's size in bytes (x) and the number of libraries that it loads (round).
//
// tavrel_bench requests [PROGRAM…] has the Wine server trace two runs of each program in each scene; its rows
// are
//   requests,scene,x,program,round,identifier of the first thread
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "acceptance/driver.h"
#include "measure.h"
#include "resource.h"
#include "support/text.h"

namespace {

using support::HttpServer;
using support::Reply;

constexpr char kComplete[] = "CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n";
constexpr unsigned kMega = 1024 * 1024;

struct Program {
  std::string name;
  std::wstring path;
  bool check_only = true;  ///< it has no settings and no Retry button: a floor, or not a build of the utility
  bool shows_sheet = HasSheet(path);
};

std::string ListOf(unsigned packs) {
  std::string list = "[Update Packs for Versions]\r\n";
  for (unsigned i = 0; i < packs; ++i) list += "[Varnexa15_0_1_" + std::to_string(i) + "]\r\nSize=1\r\n";
  return list;
}

void Print(const char* kind, const std::string& scene, unsigned x, const std::string& program, unsigned round,
           const Measure& measure) {
  std::printf("%s,%s,%u,%s,%u,%.2f,%.3f,%u\n", kind, scene.c_str(), x, program.c_str(), round,
              measure.milliseconds, measure.processor_milliseconds, measure.kib);
}

class Bench {
 public:
  Bench(unsigned rounds, std::vector<Program> programs) : rounds_(rounds), programs_(std::move(programs)) {
    machine_.PlaceExecutable(L"15.0.2.7");  // newer than every pack: no check opens the sheet
    machine_.WriteSettings(kComplete);
  }

  void Facts();
  void Scenes();
  /// From here on each run has the Wine server trace its requests.
  void TraceRequests();
  void Growth();
  void Retries();

 private:
  void Rounds(const char* kind, const std::string& scene, unsigned x, unsigned rounds, Until until,
              bool with_floors = true);
  void Grow(const char* what, const std::vector<unsigned>& sizes, const std::function<void(unsigned)>& make);
  void ClearLogs() const;

  unsigned rounds_;
  bool traces_requests_ = false;
  std::vector<Program> programs_;
  InstalledMachine machine_;
  std::string body_ = ListOf(1);
  const HttpServer server_{[this] { return Reply(200, body_); }};
};

void Bench::Rounds(const char* kind, const std::string& scene, unsigned x, unsigned rounds, Until until,
                   bool with_floors) {
  std::fprintf(stderr, "-- %s, %u: %u rounds\n", scene.c_str(), x, rounds);
  // The first round, 0, fills the caches and does not count.
  for (unsigned round = 0; round <= rounds; ++round) {
    for (std::size_t i = 0; i < programs_.size(); ++i) {
      const Program& program = programs_[(i + round) % programs_.size()];
      if (program.check_only && !with_floors) continue;
      if (until == Until::painted && !program.shows_sheet) continue;
      const auto measure = MeasureRun(program.path, until == Until::painted ? L"" : L"2", until);
      if (!measure) {
        std::fprintf(stderr, "%s, %s: a run did not end\n", scene.c_str(), program.name.c_str());
        std::exit(1);
      }
      if (traces_requests_) {
        std::printf("requests,%s,%u,%s,%u,%04lx\n", scene.c_str(), x, program.name.c_str(), round,
                    measure->first_thread);
      } else if (round != 0) {
        Print(kind, scene, x, program.name, round, *measure);
      }
    }
  }
}

void Bench::TraceRequests() {
  traces_requests_ = true;
  SetEnvironmentVariableW(L"WINEDEBUG", L"-all,+server");
}

void Bench::Facts() {
  for (const Program& program : programs_) {
    const auto bytes = static_cast<unsigned>(std::filesystem::file_size(program.path));
    Print("facts", "silent check", bytes, program.name, CountLibraries(program.path, L"2"), {});
    if (program.shows_sheet)
      Print("facts", "sheet", bytes, program.name, CountLibraries(program.path, L""), {});
  }
}

void Bench::Scenes() {
  Rounds("scene", "silent check: 1 pack", 1, rounds_, Until::ended);
  body_ = ListOf(100000);
  Rounds("scene", "silent check: 100000 packs", 100000, rounds_, Until::ended);
  body_ = ListOf(1) + std::string(30 * kMega, ';');
  Rounds("scene", "silent check: 30 MiB", 30 * kMega, rounds_, Until::ended);
  body_ = ListOf(1);
  Rounds("scene", "first painted sheet", 1, rounds_, Until::painted);
  machine_.WriteSettings("CHECKUPDATES=FALSE\r\n");
  Rounds("scene", "updates off", 1, rounds_, Until::ended, false);
  machine_.WriteSettings(kComplete);
}

void Bench::ClearLogs() const {
  for (const std::wstring& name : support::FileNames(machine_.LogFolder()))
    DeleteFileW((machine_.LogFolder() + L"\\" + name).c_str());
}

void Bench::Grow(const char* what, const std::vector<unsigned>& sizes,
                 const std::function<void(unsigned)>& make) {
  for (const unsigned size : sizes) {
    make(size);
    Rounds("growth", what, size, std::max(rounds_ / 3, 3U), Until::ended);
  }
  ClearLogs();
  DeleteFileW(machine_.Record().c_str());
  body_ = ListOf(1);
}

void Bench::Growth() {
  Grow("sections of the list", {1, 10, 100, 1000, 10000, 100000, 400000},
       [this](unsigned packs) { body_ = ListOf(packs); });
  Grow("bytes of the list", {100, 1000, 10000, 100000, kMega, 4 * kMega, 10 * kMega, 30 * kMega},
       [this](unsigned bytes) {
         body_ = ListOf(1);
         if (bytes > body_.size()) body_ += std::string(bytes - body_.size(), ';');
       });
  // It covers the list and is not newer than the product, so the check leaves it in place.
  const std::string record = "15.0.1.0 [Varnexa15_0_1_0]";
  Grow("bytes of the record", {10, 1000, 10000, 100000, kMega, 4 * kMega, 20 * kMega}, [&](unsigned bytes) {
    support::WriteBytes(machine_.Record(), (record + std::string(bytes, ' ')).substr(0, bytes));
  });
  Grow("log files in the folder", {0, 10, 100, 1000, 10000}, [this](unsigned files) {
    ClearLogs();
    for (unsigned i = 0; i < files; ++i) {
      support::WriteBytes(machine_.LogFolder() + L"\\QRT_15_SystemTavrel_" + std::to_wstring(i) + L".log",
                          "");
    }
  });
  Grow("bytes of the log file", {100, 10000, kMega, 8 * kMega, 64 * kMega}, [this](unsigned bytes) {
    support::WriteBytes(machine_.LogFolder() + L"\\QRT_15_SystemTavrel_1.log", std::string(bytes, '.'));
  });
}

void Bench::Retries() {
  constexpr unsigned kRetries = 1000;
  for (const Program& program : programs_) {
    if (program.check_only) continue;
    std::fprintf(stderr, "-- %s: %u retries in one window\n", program.name.c_str(), kRetries);
    const Run run(program.path);
    run.Answered();
    const HWND retry = run.Control(IDC_RETRY);
    DWORD id = 0;
    GetWindowThreadProcessId(retry, &id);
    const platform::UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
    for (unsigned i = 1; i <= kRetries; ++i) {
      const std::size_t asked = server_.Requests().size();
      const double began = Now();
      Ask(retry, BM_CLICK);
      Ask(retry, WM_NULL);
      const double took = Now() - began;
      if (server_.Requests().size() != asked + 1) {
        std::fprintf(stderr, "retry %u asked the server %zu times\n", i, server_.Requests().size() - asked);
        std::exit(1);
      }
      Print("retry", "retries in one window", i, program.name, 1,
            {.milliseconds = took, .kib = PeakMemory(process.get())});
    }
  }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  const bool requests = count > 1 && std::wstring_view(arguments[1]) == L"requests";
  const unsigned rounds = requests ? 1 : count > 1 ? std::wcstoul(arguments[1], nullptr, 10) : 20;
  const std::wstring floors = TAVREL_FLOORS;
  std::vector<Program> programs{
      {.name = "utility", .path = TAVREL_UTILITY, .check_only = false},
      {.name = "floor", .path = floors + L"/tavrel_floor.exe"},
      {.name = "floor with a window's start-up", .path = floors + L"/tavrel_floor_window.exe"}};
  for (int i = 2; i < count; ++i) {
    programs.push_back(
        {.name = support::Utf8(arguments[i]), .path = arguments[i], .check_only = !HasSheet(arguments[i])});
  }
  Bench bench(std::max(rounds, 1U), programs);
  if (requests) {
    bench.TraceRequests();
    bench.Scenes();
    return 0;
  }
  bench.Facts();
  bench.Scenes();
  bench.Growth();
  bench.Retries();
  return 0;
}
