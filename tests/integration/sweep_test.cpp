#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>

#include "support/http_server.h"
#include "support/text.h"
#include "support/watchdog.h"
#include "sweep.h"
#include "sweep_rules.h"
#include "sweep_scenes.h"
#include "text/text.h"

namespace {

using namespace sweep;

Files Snapshot(const std::wstring& root) {
  Files files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::wstring path = entry.path().wstring();
    if (entry.is_directory()) continue;
    // Of the product's executable, by far the largest file, the time of its last change will do.
    files[path.substr(root.size())] = path.ends_with(L".exe")
                                          ? std::to_string(entry.last_write_time().time_since_epoch().count())
                                          : support::ReadBytes(path).value_or("(unreadable)");
  }
  return files;
}

const Rule* FindRule(char scene, const Call& call) {
  const Rule* any_code = nullptr;
  for (const Rule& rule : kRules) {
    if (std::strchr(rule.scenes, scene) == nullptr || std::strcmp(rule.function, call.function->name) != 0)
      continue;
    if (!call.subject.ends_with(rule.subject) || (rule.nth != 0 && rule.nth != call.nth)) continue;
    if (rule.code == static_cast<int>(call.code)) return &rule;
    if (rule.code == 0 && any_code == nullptr) any_code = &rule;
  }
  return any_code;
}

bool Said(const std::wstring& said, std::wstring wanted, DWORD code) {
  text::ReplaceAll(wanted, L"#", std::to_wstring(code));
  text::ReplaceAll(wanted, L"|", L"\n\n");
  for (std::size_t start = 0, end = 0; end != std::wstring::npos; start = end + 1) {
    end = wanted.find(L'~', start);
    if (said.find(wanted.substr(start, end - start)) != std::wstring::npos) return true;
  }
  return false;
}

/// One scene on its own machine, run again and again with other plans.
class Stage {
 public:
  explicit Stage(const Scene& scene) : scene_(scene) {
    Furnish(machine_);
    scene.arrange(machine_);
    root_ = std::filesystem::path(machine_.Documents()).parent_path().wstring();
    before_ = Snapshot(root_);
    calls_ = Play({}).calls;
    base_ = outcome_;
    base_files_ = after_;
    base_complaint_ = scene_.judge(base_, before_, after_);
    Restore();
  }

  const std::vector<Call>& Calls() const { return calls_; }
  const std::string& BaseComplaint() const { return base_complaint_; }

  std::vector<Call> CallsWith(const Fault& fault) {
    std::vector<Call> calls = Play({{fault}, false}).calls;
    Restore();
    return calls;
  }

  /// Plays the scene and judges it; the complaints, empty when all is well.
  std::string Try(const Plan& plan) {
    const Run run = Play(plan);
    std::string complaint;
    for (const std::string& disorder : run.disorder) complaint += disorder + "; ";
    if (const std::string judged = scene_.judge(outcome_, before_, after_); !judged.empty())
      complaint += judged + "; ";
    complaint += Strangers() + Broken(run, plan.faults.size() == 1);
    if (!complaint.empty())
      complaint += "\n    said: " + support::Utf8(outcome_.said + L" " + outcome_.state);
    Restore();
    return complaint;
  }

 private:
  Run Play(const Plan& plan) {
    Run run = Perform(plan, [this] { outcome_ = scene_.act(machine_); });
    after_ = Snapshot(root_);
    return run;
  }

  void Restore() {
    for (const auto& [path, bytes] : after_) {
      if (!before_.contains(path)) DeleteFileW((root_ + path).c_str());
    }
    for (const auto& [path, bytes] : before_) {
      if (after_[path] != bytes) support::WriteBytes(root_ + path, bytes);
    }
    if (scene_.letter == 's') scene_.arrange(machine_);
  }

  /// Changes of files that are not the scene's.
  std::string Strangers() const {
    std::string complaint;
    Files all = before_;
    all.insert(after_.begin(), after_.end());
    for (const auto& [path, bytes] : all) {
      const bool owned = std::any_of(scene_.owns.begin(), scene_.owns.end(),
                                     [&](const std::wstring& end) { return path.ends_with(end); });
      const auto old = before_.find(path);
      const auto now = after_.find(path);
      const bool same = old != before_.end() && now != after_.end() && old->second == now->second;
      if (!owned && !same) complaint += "changed: " + support::Utf8(path) + "; ";
    }
    return complaint;
  }

  std::string Broken(const Run& run, bool alone) const {
    std::string complaint;
    std::string harmless;
    bool any_rule = false;
    for (const Call& call : run.calls) {
      if (call.code == 0) continue;
      const Rule* rule = FindRule(scene_.letter, call);
      any_rule = any_rule || rule != nullptr;
      if (rule == nullptr) harmless += std::string(" ") + call.function->name;
      if (rule != nullptr && !Said(outcome_.said, rule->text, call.code)) {
        complaint += std::string(call.function->name) +
                     " failed and this was not said: " + support::Utf8(rule->text) + "; ";
      }
    }
    if (alone && !any_rule && (outcome_ != base_ || after_ != base_files_)) {
      complaint += "no rule lets the outcome change when these fail:" + harmless + "; ";
    }
    return complaint;
  }

  const Scene& scene_;
  support::Machine machine_;
  std::wstring root_;
  Files before_, after_, base_files_;
  Outcome outcome_, base_;
  std::vector<Call> calls_;
  std::string base_complaint_;
};

/// TAVREL_SWEEP_REPLAY=scene:number plays one run alone.
struct Replay {
  std::string scene;
  long number = -1;
};

std::optional<Replay> Wanted() {
  const char* text = std::getenv("TAVREL_SWEEP_REPLAY");
  const char* colon = text == nullptr ? nullptr : std::strchr(text, ':');
  if (colon == nullptr) return std::nullopt;
  return Replay{{text, colon}, std::atol(colon + 1)};
}

std::string now_playing;

LONG WINAPI NameTheRun(EXCEPTION_POINTERS* /*pointers*/) {
  std::printf("crashed; replay alone with TAVREL_SWEEP_REPLAY=%s\n", now_playing.c_str());
  std::fflush(nullptr);
  return EXCEPTION_CONTINUE_SEARCH;
}

class Tally {
 public:
  explicit Tally(std::string scene) : scene_(std::move(scene)) {}

  void Play(Stage& stage, const Plan& plan) {
    now_playing = scene_ + ":" + std::to_string(number_);
    const std::optional<Replay> wanted = Wanted();
    const long number = number_++;
    if (wanted && wanted->number != number) return;
    const std::string complaint = stage.Try(plan);
    ++runs_;
    if (complaint.empty()) return;
    ++failures_;
    const std::string where = Where(stage, plan);
    CAPTURE(now_playing);
    CAPTURE(where);
    CHECK_MESSAGE(complaint.empty(), complaint);
  }

  void Report(std::size_t calls) const {
    std::printf("sweep %-18s %4zu calls %5zu runs %5zu passed\n", scene_.c_str(), calls, runs_,
                runs_ - failures_);
    std::fflush(stdout);
  }

 private:
  static std::string Where(const Stage& stage, const Plan& plan) {
    std::string text;
    for (const Fault& fault : plan.faults) {
      text += "call " + std::to_string(fault.call) + " error " + std::to_string(fault.code);
      if (fault.call < stage.Calls().size()) {
        const Call& call = stage.Calls()[fault.call];
        text += std::string(" ") + call.function->name + " " + support::Utf8(call.subject);
      }
      text += plan.from_then_on ? " and all later ones; " : "; ";
    }
    return text;
  }

  std::string scene_;
  long number_ = 0;
  std::size_t runs_ = 0, failures_ = 0;
};

bool Skipped(const std::string& scene) {
  const std::optional<Replay> wanted = Wanted();
  return wanted && wanted->scene != scene;
}

void SweepSingles(const Scene& scene) {
  if (Skipped(scene.name)) return;
  support::AllowSeconds(60);
  Stage stage(scene);
  REQUIRE_MESSAGE(stage.BaseComplaint().empty(),
                  scene.name << " without failures: " << stage.BaseComplaint());
  Tally tally(scene.name);
  for (std::size_t call = 0; call < stage.Calls().size(); ++call) {
    for (const DWORD code : stage.Calls()[call].function->codes) {
      for (const bool from_then_on : {false, true}) tally.Play(stage, {{{call, code}}, from_then_on});
    }
  }
  tally.Report(stage.Calls().size());
}

/// Every call and every later call of the run in which the first one failed, each with its first code.
void SweepPairs(const Scene& scene, const char* first_function) {
  const std::string name = std::string(scene.name) + "-pairs";
  if (Skipped(name)) return;
  support::AllowSeconds(60);
  Stage stage(scene);
  Tally tally(name);
  const std::vector<Call>& calls = stage.Calls();
  const auto start = std::find_if(calls.begin(), calls.end(), [&](const Call& call) {
    return std::strcmp(call.function->name, first_function) == 0;
  });
  for (auto first = start; first != calls.end(); ++first) {
    const Fault fault{static_cast<std::size_t>(first - calls.begin()), first->function->codes.front()};
    const std::vector<Call> after = stage.CallsWith(fault);
    for (std::size_t second = fault.call + 1; second < after.size(); ++second) {
      tally.Play(stage, {{fault, {second, after[second].function->codes.front()}}, false});
    }
  }
  tally.Report(static_cast<std::size_t>(calls.end() - start));
}

}  // namespace

TEST_CASE("a failing call that breaks the check, its log, or a file is found") {
  SetUnhandledExceptionFilter(NameTheRun);
  const support::HttpServer server(support::Reply(200, kServedList));
  for (const Scene& scene : Scenes()) SweepSingles(scene);
}

TEST_CASE("a failure whose own report fails as well breaks nothing") {
  const support::HttpServer server(support::Reply(200, kServedList));
  for (const Scene& scene : Scenes()) {
    if (std::strchr("di", scene.letter) != nullptr) SweepPairs(scene, "GetTempPathW");
    if (std::strchr("ln", scene.letter) != nullptr) SweepPairs(scene, "SHGetSpecialFolderPathW");
  }
}

TEST_CASE("a function that nobody has judged is not swept silently") {
  std::string names;
  for (const std::string& name : UnjudgedImports(TAVREL_PROGRAM)) names += " " + name;
  CHECK(names == "");
}
