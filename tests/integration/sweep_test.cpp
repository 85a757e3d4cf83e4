#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
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
using Files = std::map<std::wstring, std::string>;  ///< path, content

/// TAVREL_SWEEP_REPLAY selects one run, and those that its number begins with.
bool Wanted(const std::string& number) {
  const char* const replay = std::getenv("TAVREL_SWEEP_REPLAY");
  return replay == nullptr || std::string_view(replay).starts_with(number);
}

bool In(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != text.npos;
}

/// Whether `report` has the text, in which '|' stands between entries and '#' for the code.
bool Has(const std::wstring& report, std::wstring text, DWORD code = 0) {
  text::ReplaceAll(text, L"#", std::to_wstring(code));
  text::ReplaceAll(text, L"|", L"\n\n");
  return In(report, text);
}

struct Tables {
  const std::vector<Row> rules = support::Rows("integration/sweep_rules.txt", 5, 5);
  const std::vector<Row> ends = support::Rows("integration/sweep_ends.txt", 2, 2);
  std::set<const Row*> used{};  ///< rules that a call needed, and outcomes that occurred
};

/// Runs one scene on its own machine again and again, with another plan each time.
class SceneRunner {
 public:
  SceneRunner(const Scene& scene, Tables& tables) : scene_(scene), tables_(tables) {
    Prepare(machine_);
    scene.arrange(machine_);
    root_ = std::filesystem::path(machine_.Documents()).parent_path().wstring();
    before_ = Snapshot();
    RunScene({});  // creates what later runs find
    calls_ = RunScene({}).calls;
    base_ = report_;
    CHECK(BrokenInvariants().empty());
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
  }

  static LONG WINAPI OnCrash(EXCEPTION_POINTERS*) {
    std::fprintf(stderr, "crashed; replay alone: TAVREL_SWEEP_REPLAY=%s\n", number.c_str());
    return EXCEPTION_CONTINUE_SEARCH;
  }

 private:
  Run Try(const Plan& plan) {
    number = scene_.name + ":";
    for (const auto& [call, code] : plan.faults) {
      number += std::to_string(call) + "," + std::to_string(code) + ",";
    }
    number += plan.from_then_on ? "on" : "";
    if (!Wanted(number)) return {};
    INFO("replay alone: TAVREL_SWEEP_REPLAY=", number);
    Run run = RunScene(plan);
    ++runs_;
    std::wstring failed;
    for (const Call& call : run.calls) {
      if (call.code != 0) failed += call.function + L" " + call.subject + L"; ";
    }
    INFO("failed: ", support::Utf8(failed + L"\nreport: " + report_));
    CHECK(support::Utf8(run.disorder + BrokenInvariants() + MissedRules(run, plan.faults.size() == 1)) == "");
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
    text::ReplaceAll(report_, L"updates-" + std::to_wstring(GetCurrentProcessId()), L"updates-own");
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
  std::wstring BrokenInvariants() const {
    std::wstring broken;
    const auto require = [&broken](bool holds, const wchar_t* what) {
      if (!holds) broken.append(what).append(L"; ");
    };
    if (letter_ == L"c") {
      require(Has(report_, L"|=========== Registered Data Entries Check : Start ===========|") &&
                  Has(report_, L"|=========== Registered Data Entries Check : End ===========|") &&
                  Has(report_, L"|=========== Check Product Updates Availability : End ============|-- "),
              L"rule lines frame the check");
      // The entry is in the log if and only if the result is in the report.
      const std::pair<const wchar_t*, const wchar_t*> together[] = {
          {L"\n Error : ", L"\\+failed"},
          {L"\n Error : (122|12002|12007|12029|12150)\\b", L"\\+network"},
          {L"Update details found\\.", L"\\+updates"},
          // Without the facts the user is warned, and no server is asked.
          {L"Updates Availability : Start =+\n\n=", L"\\+warned"},
          {L"Processed Installer update file exists in local\\.", L"installedupdates\\.dat=missing"}};
      for (const auto& [entry, result] : together) {
        const bool logged = std::regex_search(report_, std::wregex(entry));
        require(logged == std::regex_search(report_, std::wregex(result)), result);
      }
    }
    const std::wstring end = report_.substr(report_.rfind(L"-- ") + 3);
    const auto allowed = std::find_if(tables_.ends.begin(), tables_.ends.end(),
                                      [&](const Row& row) { return row[0] == letter_ && row[1] == end; });
    require(allowed != tables_.ends.end(), L"the outcome is allowed");
    if (allowed != tables_.ends.end()) tables_.used.insert(&*allowed);
    return broken;
  }

  /// The rules that the report does not meet.
  std::wstring MissedRules(const Run& run, bool alone) const {
    std::wstring missed;
    bool ruled = false;
    for (const Call& call : run.calls) {
      const std::wstring which = L"(" + std::to_wstring(call.nth) + L")[" + std::to_wstring(call.code) + L"]";
      const auto fits = [&](const Row& rule) {
        return rule[0] == letter_ && In(L"|" + rule[1] + L"|", L"|" + call.function + L"|") &&
               call.subject.ends_with(rule[2]) && In(which, rule[3]);
      };
      const auto rule = call.code == 0 ? tables_.rules.end()
                                       : std::find_if(tables_.rules.begin(), tables_.rules.end(), fits);
      if (rule == tables_.rules.end()) continue;
      ruled = true;
      const std::wstring& wanted = (*rule)[4];
      if (wanted != L"*" || report_ != base_) tables_.used.insert(&*rule);
      if (wanted != L"*" && !Has(report_, wanted, call.code)) missed += L"not said: " + wanted + L"; ";
    }
    return alone && !ruled && report_ != base_ ? missed + L"no rule lets the outcome change; " : missed;
  }

  static inline std::string number;  ///< of the present run
  const Scene& scene_;
  Tables& tables_;
  const std::wstring letter_{static_cast<wchar_t>(scene_.name[0])};
  support::Machine machine_;
  std::wstring root_, report_, base_;
  Files before_;
  std::vector<Call> calls_;
  unsigned runs_ = 0;
};

}  // namespace

TEST_CASE("sweep: after each failing call handles, files, flags and log are as documented") {
  const support::HttpServer server(
      support::Reply(200, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n"));
  SetUnhandledExceptionFilter(SceneRunner::OnCrash);
  const support::ImportHook<GetLocalTime> noon("GetLocalTime", [](SYSTEMTIME* time) {
    *time = {2020, 9, 0, 13, 12, 0, 0, 0};  // Sunday, 13 September
  });
  Tables tables;
  for (const Scene& scene : Scenes()) {
    if (Wanted(scene.name + ":")) SceneRunner(scene, tables).Sweep();
  }
  if (std::getenv("TAVREL_SWEEP_REPLAY") != nullptr) return;
  for (const auto* table : {&tables.rules, &tables.ends}) {
    for (const Row& row : *table) {
      CAPTURE(support::Utf8(row[1] + L" " + row.back()));
      CHECK((!row.back().empty() && tables.used.contains(&row)));
    }
  }
}

TEST_CASE("sweep: the table of functions covers every call of the program that can fail") {
  CHECK(UncoveredImports(TAVREL_PROGRAM) == "");
}
