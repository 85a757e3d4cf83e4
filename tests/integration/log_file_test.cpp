#include <doctest.h>

#include <windows.h>

#include <shlobj.h>

#include <regex>

#include "expected.h"
#include "log/activity_log.h"
#include "log/sheet_log.h"
#include "platform/administrator.h"
#include "platform/files.h"
#include "platform/sharing.h"
#include "support/machine.h"
#include "version.h"

using support::ImportHook;
using support::ReadBytes;
using support::Utf8;

namespace {

const std::wregex kErrorTime(L"[A-Z][a-z]+ [0-9]{2}, [0-9]{4} [A-Z][a-z]+day [0-9]{2}:[0-9]{2}: ");
const std::wregex kHeaderTime(L"[A-Z][a-z]+day [0-9]{2}:[0-9]{2}, [A-Z][a-z]+ [0-9]{2}, [0-9]{4}");

/// A log folder, and one run that writes to it. Files of the program are named by one letter.
struct LogFolder {
  const support::Machine machine;
  SystemLog log;

  LogFolder() {
    g_strCurrentLogFile.clear();
    support::MakeFolder(machine.LogFolder());
  }
  std::wstring Path(const std::wstring& name) const {
    return machine.LogFolder() + L"\\" + name + (name.size() == 1 ? L"_QRT_15_SystemTavrel_.log" : L"");
  }
  void Have(const std::wstring& name, unsigned age_seconds) const {
    support::WriteBytes(Path(name), "old\r\n");
    support::SetWriteTime(Path(name), 130000000000000000 - age_seconds * 10000000ull);
  }
  std::string Text(const std::wstring& name) const { return ReadBytes(Path(name)).value_or("no file"); }
  /// The text of the one file that is named as a new one is.
  std::string NewText() const {
    const std::wregex name(
        L"QRT_15_SystemTavrel_[0-3][0-9][A-Z][a-z]{2}[0-9]{4}_[01][0-9]_[0-5][0-9]_[AP]M\\.log");
    std::string text;
    for (const std::wstring& file : support::FileNames(machine.LogFolder())) {
      if (std::regex_match(file, name)) text += Text(file);
    }
    return text;
  }
  void Write(std::wstring_view entry) {
    log.AppendEntry(entry);
    log.OpenSystemLog();
  }
};

}  // namespace

TEST_CASE_FIXTURE(LogFolder, "the newest log file gets each entry as a line of UTF-8") {
  Have(L"A", 6), Have(L"B", 4), Have(L"C", 5);
  Have(L"x_qrt_15_systemtavrel_.log", 1), Have(L"QRT_15_SystemTavrel_.txt", 1);
  support::MakeFolder(Path(L"Z"));
  Write(L"new\n\n\n\n\u00e4 \u20ac \n");
  CHECK(Text(L"B") == "old\r\nnew\r\n\xc3\xa4 \xe2\x82\xac \r\n");
  CHECK(Utf8(g_strCurrentLogFile) == Utf8(Path(L"B")));
  for (const wchar_t* other : {L"A", L"C", L"x_qrt_15_systemtavrel_.log", L"QRT_15_SystemTavrel_.txt"}) {
    CHECK(Text(other) == "old\r\n");
  }
}

TEST_CASE_FIXTURE(LogFolder, "one run writes one header, stays with its file and writes only what is new") {
  log.SetHeader(L"replaced\n\n");
  log.SetHeader(L"header\n\n");
  Write(L"first");
  CHECK(NewText() == "header\r\nfirst\r\n");
  support::WriteBytes(Path(L"A"), "newer\r\n");
  log.SetHeader(L"late\n\n");
  Write(L"second");
  CHECK(NewText() == "header\r\nfirst\r\nsecond\r\n");
  DeleteFileW(g_strCurrentLogFile.c_str());
  log.OpenSystemLog();
  CHECK((NewText().empty() && Text(L"A") == "newer\r\n"));
  Write(L"third");
  CHECK(Text(L"A") == "newer\r\nthird\r\n");
}

TEST_CASE_FIXTURE(LogFolder, "a file that cannot be written is carried over into a new one") {
  Have(L"A", 5);
  SUBCASE("readable") {
    const support::ShareLock held(Path(L"A"), FILE_SHARE_READ);
    Write(L"new");
    CHECK(NewText() == "old\r\nnew\r\n");
  }
  SUBCASE("unreadable") {
    const support::ShareLock held(Path(L"A"));
    Write(L"new");
    CHECK(NewText() ==
          "Error in System Tavrel Log File updates while reading old history informations.\r\nnew\r\n");
  }
  CHECK(Text(L"A") == "old\r\n");
}

TEST_CASE_FIXTURE(LogFolder, "what could not be written is written later, with the reason") {
  log.SetHeader(L"header\n\n");
  std::wstring reason;
  SUBCASE("no folder") {
    support::RemoveTree(machine.LogFolder());
    Write(L"new");
    support::MakeFolder(machine.LogFolder());
  }
  SUBCASE("no permission") {
    const ImportHook<CreateFileW> refused("CreateFileW", 5, INVALID_HANDLE_VALUE);
    Write(L"new");
    reason = L"at Error in System Tavrel Log File creation.\n";
  }
  SUBCASE("a full disk") {
    support::WriteBytes(Path(L"A"), "old\r\n");
    const ImportHook<WriteFile> disk(
        "WriteFile", [&, calls = 0](auto file, auto bytes, auto, auto written, auto) mutable {
          return calls++ == 0 ? disk.original(file, bytes, 1, written, nullptr) : (*written = 0, TRUE);
        });
    Write(L"new");
    CHECK(Text(L"A") == "old\r\n");
    DeleteFileW(Path(L"A").c_str());
    reason = L"at Error in System Tavrel Log File updates." + platform::SystemMessage(112) + L"\n";
  }
  CHECK(g_strCurrentLogFile.empty());
  CHECK(NewText().empty());
  CHECK(std::regex_replace(log.ErrorText(), kErrorTime, L"at ") == reason);
  const std::string errors = std::regex_replace(Utf8(log.ErrorText()), std::regex("\n"), "\r\n");
  log.OpenSystemLog();
  CHECK(NewText() == "header\r\nnew\r\n" + errors);
}

TEST_CASE_FIXTURE(LogFolder, "an append waits for another process, and keeps others from writing meanwhile") {
  Have(L"A", 5);
  const support::HeldForAMoment other(Path(L"A"));
  const ImportHook<WriteFile> write("WriteFile", [&](auto... all) {
    CHECK(CreateFileW(Path(L"A").c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, 0, nullptr) == INVALID_HANDLE_VALUE);
    return write.original(all...);
  });
  platform::g_nWaitLeftMs = 50;
  Write(L"new");
  CHECK(Text(L"A") == "old\r\nnew\r\n");
}

TEST_CASE_FIXTURE(LogFolder,
                  "the dated log has the header, the settings and the check of a regular run, each once") {
  g_strProgramFileVersion = L"" TAVREL_FILE_VERSION;
  CHECK(platform::IsRunningAsAdmin() == (IsUserAnAdmin() != FALSE));
  ActivityLog activity;
  {
    const ImportHook<AccessCheck> granted(
        "AccessCheck", [](auto, auto, auto, auto, auto, auto, auto, BOOL* status) { return *status = TRUE; });
    activity.WriteRunHeader();
  }
  CHECK(activity.IsAdministrator());
  CHECK_LOG(std::regex_replace(activity.LogText(), kHeaderTime, L"now"),
            L"HEADER|App  Mode: Admin, User Mode: NA, Invoke Mode: Patch verfication.");
  activity.AppendLogLine(L"settings");
  SheetLog sheet(activity.DatedLog());
  const ImportHook<AccessCheck> refused("AccessCheck", 5);
  CHECK_FALSE(sheet.WriteRegularRunHeader());
  sheet.Append(L"");
  sheet.Append(L"check");
  sheet.AppendSheetLine(L"page");
  const std::wstring header = L"HEADER|App  Mode: User, User Mode: NA, Invoke Mode: Regular.";
  CHECK_LOG(std::regex_replace(sheet.SheetLogText(), kHeaderTime, L"now"), header + L"|check|page");
  CHECK_LOG(std::regex_replace(activity.DatedLog().PendingText(), kHeaderTime, L"now"),
            header + L"|settings|check");
  sheet.ApplyBuildVersionToLog(L"15.0.2.5");
  CHECK(activity.DatedLog().PendingText().find(L"Build Version : 15.0.2.5\n\n") != std::wstring::npos);
}

TEST_CASE("an empty entry adds its separator to the activity log and nothing to the sheet log") {
  ActivityLog activity;
  SheetLog sheet(activity.DatedLog());
  for (const wchar_t* text : {L"", L"a"}) {
    activity.AppendLogLine(text);
    for (const bool single : {true, false}) sheet.AppendSheetLine(text, single);
  }
  CHECK((activity.LogText() == L"\n\na\n\n" && sheet.SheetLogText() == L"a\na\n\n"));
}
