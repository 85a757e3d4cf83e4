#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <regex>

#include "support/http_server.h"
#include "support/text.h"
#include "sweep.h"
#include "text/text.h"

namespace {

using namespace sweep;
using Files = std::map<std::wstring, std::string>;  ///< path, content

/// TAVREL_SWEEP_REPLAY plays one run alone, and what its number is built upon.
bool Wanted(const std::string& number) {
  const char* const replay = std::getenv("TAVREL_SWEEP_REPLAY");
  return replay == nullptr || std::string_view(replay).starts_with(number);
}

bool In(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != text.npos;
}

/// Whether `report` has one of the texts: '~' between them, '|' for the end of an entry, '#' for the code.
bool Has(const std::wstring& report, std::wstring texts, DWORD code = 0) {
  text::ReplaceAll(texts, L"#", std::to_wstring(code));
  text::ReplaceAll(texts, L"|", L"\n\n");
  const std::vector<std::wstring> all = support::Split(texts, L'~');
  return all.empty() ||
         std::any_of(all.begin(), all.end(), [&](const std::wstring& text) { return In(report, text); });
}

/// One scene on its own machine, played again and again with other plans.
class Stage {
 public:
  explicit Stage(const Scene& scene) : scene_(scene) {
    Furnish(machine_);
    scene.arrange(machine_);
    root_ = std::filesystem::path(machine_.Documents()).parent_path().wstring();
    before_ = Snapshot();
    Play({});  // a first run also makes what stays: the calls would be counted wrongly
    calls_ = Play({}).calls;
    base_ = report_;
    CHECK(Unlawful().empty());
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
    std::printf("sweep %-14s %4zu calls %5u runs %5u passed\n", scene_.name, calls_.size(), runs_, passed_);
  }

  static LONG WINAPI OnCrash(EXCEPTION_POINTERS*) {
    std::printf("crashed; replay alone: TAVREL_SWEEP_REPLAY=%s\n", number.c_str());
    std::fflush(stdout);
    return EXCEPTION_CONTINUE_SEARCH;
  }

 private:
  Run Try(const Plan& plan) {
    number = std::string(scene_.name) + ":";
    for (const auto& [call, code] : plan.faults) {
      number += std::to_string(call) + "," + std::to_string(code) + ",";
    }
    number += plan.from_then_on ? "on" : "";
    if (!Wanted(number)) return {};
    Run run = Play(plan);
    const std::wstring wrong = run.disorder + Unlawful() + Unruly(run, plan.faults.size() == 1);
    ++runs_;
    passed_ += wrong.empty() ? 1u : 0u;
    std::wstring failed;
    for (const Call& call : run.calls) {
      if (call.code != 0) failed += call.function + L" " + call.subject + L"; ";
    }
    CHECK_MESSAGE(wrong.empty(), "replay alone: TAVREL_SWEEP_REPLAY="
                                     << number
                                     << support::Utf8(L"\nfailed: " + failed + L"\nwrong: " + wrong +
                                                      L"\nreport: " + report_));
    return run;
  }

  /// Plays the scene, reports what it said and which files it changed, and puts these back.
  Run Play(const Plan& plan) {
    Run run = Perform(plan, [this] { report_ = L"\n\n" + scene_.act(machine_); });
    Files after = Snapshot();
    for (const auto& [path, bytes] : before_) after.try_emplace(path, "missing");
    for (const auto& [path, bytes] : after) {
      const auto was = before_.find(path);
      if (was != before_.end() && was->second == bytes) continue;
      report_ += L", " + path + L"=" + std::wstring(bytes.begin(), bytes.end());
      DeleteFileW(path.c_str());
      if (was != before_.end()) support::WriteBytes(path, was->second);
    }
    text::ReplaceAll(report_, L"\r\n", L"/");
    text::ReplaceAll(report_, root_, L"");
    report_ = std::regex_replace(report_, std::wregex(L"kor[0-9a-f]+\\.tmp"), L"kor.tmp");
    text::ReplaceAll(report_, L"updates-" + std::to_wstring(GetCurrentProcessId()), L"updates-own");
    scene_.arrange(machine_);
    return run;
  }

  Files Snapshot() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
      const std::wstring path = entry.path().wstring();
      if (!entry.is_directory()) {
        files[path] = support::ReadBytes(path).value_or("unreadable");
      }
    }
    return files;
  }

  /// The laws that the report breaks.
  std::wstring Unlawful() const {
    static const auto laws = support::Rows("integration/sweep_laws.txt");
    static const auto ends = support::Rows("integration/sweep_ends.txt");
    std::wstring wrong;
    for (const auto& law : laws) {
      const bool kept = !In(law[0], letter_) || Has(report_, law[1]) == Has(report_, law[2]);
      if (!kept) wrong += L"law: " + law[1] + L"; " + law[2] + L"; ";
    }
    const std::wstring end = report_.substr(report_.rfind(L"-- ") + 3);
    const auto allows = [&](const auto& row) { return In(row[0], letter_) && row[1] == end; };
    return std::any_of(ends.begin(), ends.end(), allows) ? wrong : wrong + L"no such end is allowed; ";
  }

  /// What the rules miss.
  std::wstring Unruly(const Run& run, bool alone) const {
    static const auto rules = support::Rows("integration/sweep_rules.txt");
    std::wstring wrong;
    bool ruled = false;
    for (const Call& call : run.calls) {
      const std::wstring which = L"(" + std::to_wstring(call.nth) + L")[" + std::to_wstring(call.code) + L"]";
      const auto fits = [&](const auto& rule) {
        return In(rule[0], letter_) && In(L" " + rule[1] + L" ", L" " + call.function + L" ") &&
               call.subject.ends_with(rule[2]) && In(which, rule[3]);
      };
      const auto rule = call.code == 0 ? rules.end() : std::find_if(rules.begin(), rules.end(), fits);
      if (rule == rules.end()) continue;
      ruled = true;
      if (!Has(report_, (*rule)[4], call.code)) wrong += L"not said: " + (*rule)[4] + L"; ";
    }
    return alone && !ruled && report_ != base_ ? wrong + L"no rule lets the outcome change; " : wrong;
  }

  static inline std::string number;  ///< of the run that is played
  const Scene& scene_;
  const std::wstring letter_{scene_.letter};
  support::Machine machine_;
  std::wstring root_, report_, base_;
  Files before_;
  std::vector<Call> calls_;
  unsigned runs_ = 0, passed_ = 0;
};

}  // namespace

TEST_CASE("a failing call, or two, crashes the program, leaks, damages a file or says something else") {
  SetUnhandledExceptionFilter(Stage::OnCrash);
  const support::HttpServer server(
      support::Reply(200, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n"));
  tm noon{0, 0, 12, 13, 8, 120, 0, 0, -1};
  const auto clock = StopClock(_mktime64(&noon));
  for (const Scene& scene : Scenes()) {
    if (Wanted(std::string(scene.name) + ":")) Stage(scene).Sweep();
  }
}

TEST_CASE("a function that the program begins to call is swept by nobody") {
  CHECK(UncoveredImports(TAVREL_PROGRAM) == "");
}
