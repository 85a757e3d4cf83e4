#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "support/http_server.h"
#include "support/text.h"
#include "support/watchdog.h"
#include "sweep.h"
#include "text/text.h"

namespace {

using namespace sweep;

/// What a failing call must lead to. Calls without a rule must change nothing at all when they fail alone.
struct Rule {
  const char* scenes;      ///< letters of the scenes it holds in
  const char* functions;   ///< with blanks between
  const wchar_t* subject;  ///< end of the call's subject
  int nth;                 ///< which of the calls with this subject; 0: any
  DWORD code;              ///< with which code; 0: any
  /// Must be said: '|' between entries, '#' for the code, '~' between alternatives. Empty: the outcome may
  /// differ, and the scene's own judge decides.
  const wchar_t* text;
};

constexpr wchar_t kUninstall[] = L"Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0";
constexpr wchar_t kOther[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0";
constexpr wchar_t kMaker[] = L"Wow6432Node\\NORVIK Software Inc.\\Varnexa\\15.0";

// The first rule that fits a call is its own.
constexpr Rule kRules[] = {
    // Registered data.
    {"cdi", "RegOpenKeyExW", L"SOFTWARE\\Wow6432Node", 0, 2, L"support Mode Two identified."},
    {"cdi", "RegOpenKeyExW", L"SOFTWARE\\Wow6432Node", 0, 0,
     L"support mode  identification failed: |Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 1, 0, L"Reading tag one failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 2, 0, L"Reading tag two  failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 3, 0, L"Reading tag three failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", kOther, 1, 0,
     L" tag one failed to open.|Error : #~ path failed to open.|Error : #"},
    {"cdi", "RegQueryValueExW", L"DisplayVersion", 1, 2, L"Reading tag one query failed.|Error : 2"},
    {"cdi", "RegQueryValueExW", L"DisplayVersion", 1, 0, L"Reading tag one query failed. |Error : #"},
    {"cdi", "RegQueryValueExW", L"DisplayIcon", 0, 0, L"Reading tag two query failed. |Error : #"},
    {"cdi", "RegQueryValueExW", L"URLUpdateInfo", 0, 0, L"Reading tag three query failed.|Error : #"},
    {"cd", "RegOpenKeyExW", kMaker, 0, 0, L""},
    {"cd", "RegQueryValueExW", L"Installpath", 0, 0, L""},
    {"i", "RegOpenKeyExW", kMaker, 1, 2, L"level version add-on failed.|Error : 2|"},
    {"i", "RegOpenKeyExW", kMaker, 1, 0, L"version information failed to open.|Error : #|"},
    {"i", "RegOpenKeyExW", kMaker, 2, 0, L"level two (L1) failed|Error : #|"},
    {"i", "RegQueryValueExW", L"Version", 1, 2, L"level version (L1) failed|Error : 2|"},
    {"i", "RegQueryValueExW", L"Version", 1, 0, L"version information query failed|Error : #|"},
    {"i", "RegQueryValueExW", L"Installpath", 0, 0,
     L"Client side update check, level two failed.|Error : #|"},
    // The executable's second name; its version, whose second reading the comparison is silent without.
    {"cdi", "PathFileExistsW", L"\\qrt.exe", 0, 0, L""},
    {"c", "GetFileVersionInfoSizeW GetFileVersionInfoW VerQueryValueW", L"", 2, 0, L"check completed.|===="},
    // Exchange.
    {"cdi", "InternetCheckConnectionW", L"", 0, 0,
     L"Connect to the server not successful.| Error : # Please check your network and permissions.|"},
    {"cdi", "InternetOpenW", L"", 0, 0, L"successful.InternetOpen failed.| Error : #|"},
    {"cdi", "InternetSetOptionW", L"", 0, 0, L"Connection option status :|#|"},
    {"cdi", "InternetConnectW", L"", 0, 0, L"successful.InternetConnect failed.| Error : #|"},
    {"cdi", "HttpOpenRequestW", L"", 0, 0, L"successful.Client side open request failed.| Error : #|"},
    {"cdi", "HttpSendRequestW", L"", 0, 0, L"successful. Client side send request failed.| Error : #|"},
    {"cdi", "HttpQueryInfoW", L"", 0, 0, L"status code:|0|Client side request: Failed.| Error : #|"},
    {"cdi", "GetTempPathW", L"", 0, 0, L"file update : Failed.| Error : ~not successful~request: Failed."},
    {"cdi", "CreateFileW", L"\\updates.ini", 0, 0, L"Client side file update : Failed.| Error : #|"},
    {"cdi", "InternetReadFile", L"", 0, 0, L"Client side file update : File read failed.| Error : #|"},
    {"cdi", "WriteFile", L"", 0, 0, L"Client side file update: File write failed.| Error : #|"},
    {"cdi", "PathFileExistsW", L"\\updates.ini", 0, 0, L"completed.|Copied INI file does not exists.|"},
    {"c", "GetPrivateProfileSectionNamesW", L"", 0, 0, L"Update details not found.Exit code 3.|"},
    {"di", "GetPrivateProfileSectionNamesW", L"", 0, 0, L"Update details not found.Exit code 2.|"},
    // Comparison with a record.
    {"di", "PathFileExistsW", L"\\installedupdates.dat", 0, 0, L"Exit code 3."},
    {"di", "CreateFileW", L"\\installedupdates.dat", 0, 0, L"update file failed.|Update details "},
    {"di", "ReadFile", L"", 0, 0, L"Read installer update file failed.|Update details "},
    {"di", "DeleteFileW", L"", 0, 5, L"Not able to access Installer update file exists in local.|Update "},
    {"di", "DeleteFileW", L"", 0, 0, L"Validating Installer update file exists in local.|Error : #|Update "},
    // Start-up: rights, folder, seed.
    {"s",
     "OpenThreadToken OpenProcessToken DuplicateToken AllocateAndInitializeSid InitializeAcl "
     "AddAccessAllowedAce "
     "InitializeSecurityDescriptor SetSecurityDescriptorDacl SetSecurityDescriptorGroup "
     "SetSecurityDescriptorOwner AccessCheck",
     L"", 0, 0, L"App  Mode: User, User Mode: NA, Invoke Mode: Patch verfication.|"},
    {"s", "SHGetFolderPathW", L"", 1, 0, L"Profile settings folder path is empty.|"},
    {"s", "PathAppendW", L"\\documents", 1, 0, L"Profile settings folder path is empty.|"},
    {"s", "PathFileExistsW GetModuleFileNameW", L"\\program\\korsa.ini", 0, 0,
     L"Source path not found.|Error : #|"},
    {"s", "GetModuleFileNameW", L"", 0, 0, L"Source path not found.|Error : 2|"},
    {"s", "CopyFileW", L"\\program\\korsa.ini", 0, 0, L"file copy failed.|Error : #|Server settings INI val"},
    {"s", "MoveFileExW", L"", 1, 0, L"file copy failed.|Error : #|Server settings INI validation failed.|"},
    {"sp", "CopyFileW MoveFileExW", L"", 0, 0, L""},
    {"s", "SHGetFolderPathW PathAppendW GetFileAttributesW CreateDirectoryW", L"", 0, 0, L""},
    // Log file: silent, or an error line. Of the page's own only the file is seen.
    {"lnp", "SHGetSpecialFolderPathW GetFileAttributesW", L"", 0, 0, L""},
    {"lp", "FindFirstFileW FindNextFileW ReadFile", L"", 0, 0, L""},
    {"lp", "CreateFileW", L"01Jan2020_01_00_AM.log", 0, 0, L""},
    {"ln", "CreateFileW", L".log", 0, 0, L"Error in System Tavrel Log File creation."},
    {"ln", "SetFilePointerEx", L"", 1, 0, L"Error in System Tavrel Log File updates."},
    {"ln", "WriteFile", L"", 0, 0, L"Error in System Tavrel Log File updates."},
    {"p", "CreateFileW SetFilePointerEx WriteFile", L"", 0, 0, L""},
    // Options and launch.
    {"sp", "WritePrivateProfileStringW", L"", 0, 0, L""},
    {"p", "PathFileExistsW", L"\\Qrt.exe", 0, 0, L"The patch application file not found.\n"}};

bool Said(const std::wstring& said, std::wstring wanted, DWORD code) {
  text::ReplaceAll(wanted, L"#", std::to_wstring(code));
  text::ReplaceAll(wanted, L"|", L"\n\n");
  const std::size_t cut = wanted.find(L'~');
  if (said.find(wanted.substr(0, cut)) != std::wstring::npos) return true;
  return cut != std::wstring::npos && Said(said, wanted.substr(cut + 1), code);
}

/// One scene on its own machine, played again and again with other plans.
class Stage {
 public:
  /// TAVREL_SWEEP_REPLAY=scene:number plays one run alone.
  Stage(const Scene& scene, const std::string& name) : scene_(scene), name_(name) {
    support::AllowSeconds(90);
    Furnish(machine_);
    scene.arrange(machine_);
    root_ = std::filesystem::path(machine_.Documents()).parent_path().wstring();
    before_ = Snapshot();
    calls_ = Play({}).calls;
    base_ = outcome_;
    base_files_ = after_;
    CHECK_MESSAGE(scene.judge(base_, before_, after_) == "", name << " without a failure");
    Restore();
  }

  ~Stage() {
    std::printf("sweep %-18s %4zu calls %5u runs %5u passed\n", name_.c_str(), calls_.size(), runs_, passed_);
    std::fflush(stdout);
  }

  const std::vector<Call>& Calls() const { return calls_; }
  std::vector<Call> CallsWith(const Fault& fault) {
    std::vector<Call> calls = Play({{fault}}).calls;
    Restore();
    return calls;
  }

  void Try(const Plan& plan) {
    const std::string replay = name_ + ":" + std::to_string(number_++);
    const char* const wanted = std::getenv("TAVREL_SWEEP_REPLAY");
    if (wanted != nullptr && replay != wanted) return;
    current = replay;
    const Run run = Play(plan);
    const std::string wrong = run.disorder + scene_.judge(outcome_, before_, after_) + Strangers() +
                              Broken(run, plan.faults.size() == 1);
    Restore();
    ++runs_;
    passed_ += wrong.empty() ? 1u : 0u;
    if (wrong.empty()) return;
    std::string failed;
    for (const Call& call : run.calls) {
      if (call.code != 0) failed += call.function + (" " + support::Utf8(call.subject)) + "; ";
    }
    const std::string said = support::Utf8(outcome_.said + outcome_.state);
    FAIL_CHECK("replay alone: TAVREL_SWEEP_REPLAY=" << replay << "\nfailed: " << failed
                                                    << "\nwrong: " << wrong << "\nsaid: " << said);
  }

  static LONG WINAPI OnCrash(EXCEPTION_POINTERS*) {
    std::printf("crashed; replay alone: TAVREL_SWEEP_REPLAY=%s\n", current.c_str());
    std::fflush(stdout);
    return EXCEPTION_CONTINUE_SEARCH;
  }

 private:
  Run Play(const Plan& plan) {
    Run run = Perform(plan, [this] { outcome_ = scene_.act(machine_); });
    after_ = Snapshot();
    return run;
  }

  Files Snapshot() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
      const std::wstring path = entry.path().wstring();
      // Of the product's executable, by far the largest file, the time of its last change will do.
      if (path.ends_with(L".exe"))
        files[path] = std::to_string(entry.last_write_time().time_since_epoch().count());
      if (!entry.is_directory() && !path.ends_with(L".exe"))
        files[path] = support::ReadBytes(path).value_or("?");
    }
    return files;
  }

  void Restore() {
    for (const auto& [path, bytes] : after_) {
      if (!before_.contains(path)) DeleteFileW(path.c_str());
    }
    for (const auto& [path, bytes] : before_) {
      if (after_[path] != bytes) support::WriteBytes(path, bytes);
    }
    if (scene_.letter == 's') scene_.arrange(machine_);
  }

  /// Changes of files that are not the scene's.
  std::string Strangers() const {
    std::string wrong;
    const auto owned = [&](const std::wstring& path) {
      return std::any_of(scene_.owns.begin(), scene_.owns.end(),
                         [&](auto& end) { return path.ends_with(end); });
    };
    for (const auto& [path, bytes] : before_) {
      const auto now = after_.find(path);
      const bool same = now != after_.end() && now->second == bytes;
      if (!owned(path) && !same) wrong += "changed " + support::Utf8(path) + "; ";
    }
    for (const auto& [path, bytes] : after_) {
      if (!owned(path) && !before_.contains(path)) wrong += "new " + support::Utf8(path) + "; ";
    }
    return wrong;
  }

  std::string Broken(const Run& run, bool alone) const {
    std::string wrong;
    bool ruled = false;
    for (const Call& call : run.calls) {
      const auto fits = [&](const Rule& rule) {
        return std::strchr(rule.scenes, scene_.letter) != nullptr && call.subject.ends_with(rule.subject) &&
               (" " + std::string(rule.functions) + " ").find(" " + std::string(call.function) + " ") + 1 !=
                   0 &&
               (rule.nth == 0 || rule.nth == call.nth) && (rule.code == 0 || rule.code == call.code);
      };
      const Rule* rule = call.code == 0 ? std::end(kRules) : std::find_if(kRules, std::end(kRules), fits);
      if (rule == std::end(kRules)) continue;
      ruled = true;
      if (!Said(outcome_.said, rule->text, call.code))
        wrong += "not said: " + support::Utf8(rule->text) + "; ";
    }
    if (!alone || ruled || (outcome_ == base_ && after_ == base_files_)) return wrong;
    return wrong + "no rule lets the outcome change; ";
  }

  static inline std::string current;
  const Scene& scene_;
  std::string name_;
  support::Machine machine_;
  std::wstring root_;
  Files before_, after_, base_files_;
  Outcome outcome_, base_;
  std::vector<Call> calls_;
  unsigned number_ = 0, runs_ = 0, passed_ = 0;
};

bool Wanted(const std::string& name) {
  const char* const wanted = std::getenv("TAVREL_SWEEP_REPLAY");
  return wanted == nullptr || std::string_view(wanted).starts_with(name + ":");
}

/// Each call with each of its codes, once and for the rest of the run.
void SweepSingles(const Scene& scene) {
  Stage stage(scene, scene.name);
  for (std::size_t call = 0; call < stage.Calls().size(); ++call) {
    for (const DWORD code : stage.Calls()[call].codes) {
      for (const bool from_then_on : {false, true}) stage.Try({{{call, code}}, from_then_on});
    }
  }
}

/// Each call from `start` on and each later call of the run in which the first one failed, with their first
/// codes.
void SweepPairs(const Scene& scene, const std::string& name, std::string_view start) {
  Stage stage(scene, name);
  const std::vector<Call>& calls = stage.Calls();
  const auto is_start = [&](const Call& call) { return call.function == start; };
  for (auto first = std::find_if(calls.begin(), calls.end(), is_start); first != calls.end(); ++first) {
    const Fault fault{static_cast<std::size_t>(first - calls.begin()), first->codes.front()};
    const std::vector<Call> with = stage.CallsWith(fault);
    for (std::size_t second = fault.call + 1; second < with.size(); ++second) {
      stage.Try({{fault, {second, with[second].codes.front()}}});
    }
  }
}

}  // namespace

TEST_CASE("a failing call, or two, crashes the program, leaks, damages a file or says something else") {
  SetUnhandledExceptionFilter(Stage::OnCrash);
  const support::HttpServer server(support::Reply(200, kServedList));
  for (const Scene& scene : Scenes()) {
    const std::string pairs = std::string(scene.name) + "-pairs";
    if (Wanted(scene.name)) SweepSingles(scene);
    if (std::strchr("di", scene.letter) && Wanted(pairs)) SweepPairs(scene, pairs, "GetTempPathW");
    if (std::strchr("ln", scene.letter) && Wanted(pairs)) SweepPairs(scene, pairs, "SHGetSpecialFolderPathW");
  }
}

TEST_CASE("a function that the program begins to call is swept by nobody") {
  CHECK(UncoveredImports(TAVREL_PROGRAM) == "");
}
