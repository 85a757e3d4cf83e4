#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "support/http_server.h"
#include "support/text.h"
#include "sweep.h"
#include "text/text.h"

namespace {

using namespace sweep;
using support::Utf8;
using Files = std::map<std::wstring, std::string>;  ///< path, content

/// TAVREL_SWEEP_REPLAY selects one run, and those that its number begins with.
bool Wanted(const std::string& number) {
  const char* const replay = std::getenv("TAVREL_SWEEP_REPLAY");
  return replay == nullptr || std::string_view(replay).starts_with(number);
}

/// Runs one scene on its own machine again and again, with another plan each time.
class SceneRunner {
 public:
  explicit SceneRunner(const Scene& scene) : scene_(scene) {
    Prepare(machine_);
    scene.arrange(machine_);
    root_ = std::filesystem::path(machine_.Documents()).parent_path().wstring();
    before_ = Snapshot();
    RunScene({});  // creates what later runs find
    calls_ = RunScene({}).calls;
    CHECK(Utf8(Broken()) == "");
  }

  /// Each call with each of its codes, once and for the rest of the run; in pairs with each later call of the
  /// run in which it failed, both with their first codes.
  void Sweep() {
    for (std::size_t first = 0; first < calls_.size(); ++first) {
      const Call& call = calls_[first];
      for (const DWORD code : call.codes) {
        const Run run = Try({{{first, code}}});
        Try({{{first, code}}, true});
        if (!scene_.pairs || code != call.codes[0]) continue;
        for (std::size_t second = first + 1; second < run.calls.size(); ++second) {
          Try({{{first, code}, {second, run.calls[second].codes[0]}}});
        }
      }
    }
    std::printf("sweep %-14s %4zu calls %5u runs\n", scene_.name.c_str(), calls_.size(), runs_);
    if (std::getenv("TAVREL_SWEEP_REPLAY") != nullptr) return;
    for (const std::wstring& end : scene_.ends) CHECK_MESSAGE(seen_.contains(end), Utf8(end));
  }

  static LONG WINAPI OnCrash(EXCEPTION_POINTERS*) {
    std::fprintf(stderr, "crashed; replay alone: TAVREL_SWEEP_REPLAY=%s\n", number_.c_str());
    return EXCEPTION_CONTINUE_SEARCH;
  }

 private:
  Run Try(const Plan& plan) {
    number_ = scene_.name + ":";
    for (const auto& [call, code] : plan.faults) {
      number_ += std::to_string(call) + "," + std::to_string(code) + ",";
    }
    number_ += plan.from_then_on ? "on" : "";
    if (!Wanted(number_)) return {};
    INFO("replay alone: TAVREL_SWEEP_REPLAY=", number_);
    Run run = RunScene(plan);
    ++runs_;
    std::wstring failed;
    for (const Call& call : run.calls) {
      if (call.code != 0) failed += call.function + L" " + call.subject + L"; ";
    }
    INFO("failed: ", Utf8(failed + L"\nreport: " + report_));
    CHECK(Utf8(run.disorder + Broken()) == "");
    return run;
  }

  /// Runs the scene, reports its entries and the files that it changed, and restores these.
  Run RunScene(const Plan& plan) {
    Run run = Perform(plan, [this] { report_ = L"\n\n" + scene_.act(machine_); });
    Files after = Snapshot();
    for (const auto& [path, bytes] : before_) after.try_emplace(path, "missing");
    for (const auto& [path, bytes] : after) {
      const auto was = before_.find(path);
      if (was != before_.end() && was->second == bytes) continue;
      report_ += L"|" + path + L"=" + std::wstring(bytes.begin(), bytes.end());
      DeleteFileW(path.c_str());
      if (was != before_.end()) support::WriteBytes(path, was->second);
    }
    text::ReplaceAll(report_, L"\r\n", L"\n");
    text::ReplaceAll(report_, machine_.SettingsFile(), L"korsa.ini");
    text::ReplaceAll(report_, machine_.LogFolder() + L"\\QRT_15_SystemTavrel_", L"log:");
    for (const std::wstring& folder : {machine_.Temp(), machine_.ProductFolder()})
      text::ReplaceAll(report_, folder + L"\\", L"");
    report_ = std::regex_replace(report_, std::wregex(L"kor[0-9a-f]+\\.tmp"), L"kor.tmp");
    scene_.arrange(machine_);
    return run;
  }

  Files Snapshot() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
      const std::wstring path = entry.path().wstring();
      if (!entry.is_directory()) files[path] = support::ReadBytes(path).value_or("unreadable");
    }
    return files;
  }

  /// What does not hold after a run of the scene, whatever failed.
  std::wstring Broken() {
    const std::wstring end = report_.substr(report_.rfind(L"-- ") + 3);
    seen_.insert(end);
    const bool permitted = std::find(scene_.ends.begin(), scene_.ends.end(), end) != scene_.ends.end();
    return (scene_.broken == nullptr ? L"" : scene_.broken(report_)) +
           (permitted ? L"" : L"this end is not permitted; ");
  }

  static inline std::string number_;  ///< of the present run
  const Scene& scene_;
  support::Machine machine_;
  std::wstring root_, report_;
  std::set<std::wstring> seen_;  ///< ends that occurred
  Files before_;
  std::vector<Call> calls_;
  unsigned runs_ = 0;
};

}  // namespace

TEST_CASE("sweep: after each failing call handles, files, flags and log are in order") {
  const support::HttpServer server(
      support::Reply(200, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n"));
  SetUnhandledExceptionFilter(SceneRunner::OnCrash);
  const support::ImportHook<GetLocalTime> noon("GetLocalTime", [](SYSTEMTIME* time) {
    *time = {2020, 9, 0, 13, 12, 0, 0, 0};  // Sunday, 13 September
  });
  for (const Scene& scene : Scenes()) {
    if (Wanted(scene.name + ":")) SceneRunner(scene).Sweep();
  }
}

TEST_CASE("sweep: the table of functions covers every call of the program that can fail") {
  CHECK(UncoveredImports(TAVREL_PROGRAM) == "");
}
