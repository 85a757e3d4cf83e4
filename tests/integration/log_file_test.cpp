#include <doctest.h>

#include <windows.h>

#include <shlobj.h>

#include <chrono>
#include <filesystem>

#include "log/activity_log.h"
#include "log/log_texts.h"
#include "platform/administrator.h"
#include "platform/sharing.h"
#include "platform/system_text.h"
#include "support/machine.h"

using namespace support;

namespace {

/// A log folder at 9:41 on a Friday, and one run that writes to it. A file with a name of one letter is a log
/// file.
struct LogFolder {
  const Machine machine;
  SystemLog log;
  const ImportHook<GetLocalTime> clock{"GetLocalTime",
                                       [](SYSTEMTIME* now) { *now = {2025, 3, 5, 7, 9, 41, 59, 0}; }};

  LogFolder() {
    g_strCurrentLogFile.clear();
    platform::g_nWaitLeftMs = 0;
    MakeFolder(machine.LogFolder());
  }
  std::wstring Path(const std::wstring& name) const {
    return machine.LogFolder() + L"\\" + name + (name.size() == 1 ? L"_QRT_15_SystemTavrel_.log" : L"");
  }
  void Have(const std::wstring& name, int age_seconds) const {
    WriteBytes(Path(name), "old\r\n");
    const std::chrono::seconds age(age_seconds);
    std::filesystem::last_write_time(Path(name), std::filesystem::file_time_type::clock::now() - age);
  }
  std::string Text(const std::wstring& name) const { return ReadBytes(Path(name)).value_or(""); }
  std::string NewText() const { return Text(L"QRT_15_SystemTavrel_07Mar2025_09_41_AM.log"); }
  void Write(std::wstring_view entry) {
    log.AppendEntry(entry);
    log.OpenSystemLog();
  }
};

}  // namespace

TEST_CASE_FIXTURE(LogFolder, "the newest log file gets each entry as a line of UTF-8") {
  Have(L"A", 6), Have(L"B", 4), Have(L"C", 5), Have(L"L", 2);
  Have(L"x_qrt_15_systemtavrel_.log", 1), Have(L"QRT_15_SystemTavrel_.txt", 1);
  MakeFolder(Path(L"Z"));
  // The newest file is stored in another form; the one named L is a link to a file elsewhere.
  const ImportHook<FindNextFileW> find("FindNextFileW", [&](HANDLE handle, WIN32_FIND_DATAW* data) {
    const BOOL found = find.original(handle, data);
    data->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    data->dwReserved0 = data->cFileName[0] == L'L' ? IO_REPARSE_TAG_SYMLINK : IO_REPARSE_TAG_DEDUP;
    return found;
  });
  Write(L"new\n\n\n\n\u00e4 \u20ac \n");
  CHECK(Text(L"B") == "old\r\nnew\r\n\xc3\xa4 \xe2\x82\xac \r\n");
  CHECK(Utf8(g_strCurrentLogFile) == Utf8(Path(L"B")));
  for (const wchar_t* other :
       {L"A", L"C", L"L", L"x_qrt_15_systemtavrel_.log", L"QRT_15_SystemTavrel_.txt"}) {
    CHECK(Text(other) == "old\r\n");
  }
}

TEST_CASE_FIXTURE(LogFolder, "one run writes one header, stays with its file and writes only what is new") {
  log.SetHeader(L"replaced\n\n");
  log.SetHeader(L"header\n\n");
  Write(L"first");
  CHECK(NewText() == "header\r\nfirst\r\n");
  WriteBytes(Path(L"A"), "newer\r\n");
  log.SetHeader(L"late\n\n");
  Write(L"second");
  CHECK(NewText() == "header\r\nfirst\r\nsecond\r\n");
  DeleteFileW(g_strCurrentLogFile.c_str());
  log.OpenSystemLog();
  CHECK((NewText().empty() && Text(L"A") == "newer\r\n"));
  Write(L"third");
  CHECK(Text(L"A") == "newer\r\nthird\r\n");
}

TEST_CASE_FIXTURE(LogFolder, "a file that cannot be written is carried over into a new one, up to 64 MiB") {
  Have(L"A", 5);
  std::string old = "old";
  SUBCASE("small") {}
  SUBCASE("too large") {
    WriteBytes(Path(L"A"), std::string((64 << 20) + 1, '\n'));
    old = log_texts::kHistoryFailed;
  }
  const ShareLock held(Path(L"A"), FILE_SHARE_READ);
  Write(L"new");
  CHECK(NewText() == old + "\r\nnew\r\n");
}

TEST_CASE_FIXTURE(LogFolder, "a log that was made in this minute does not get its own lines again") {
  const std::wstring name = L"QRT_15_SystemTavrel_07Mar2025_09_41_AM.log";
  WriteBytes(Path(name), "old\r\n");
  std::optional<ShareLock> held(std::in_place, Path(name), FILE_SHARE_READ);
  const ImportHook<ReadFile> read("ReadFile",
                                  [&](auto... all) { return held.reset(), read.original(all...); });
  Write(L"new");
  CHECK(NewText() == "old\r\nnew\r\n");
}

TEST_CASE_FIXTURE(LogFolder, "what could not be written is written later, with the reason") {
  log.SetHeader(L"header\n\n");
  std::wstring reason;
  SUBCASE("no folder") {
    RemoveTree(machine.LogFolder());
    Write(L"new");
    MakeFolder(machine.LogFolder());
  }
  SUBCASE("no permission") {
    const ImportHook<CreateFileW> refused("CreateFileW", 5, INVALID_HANDLE_VALUE);
    Write(L"new");
    reason = log_texts::kCreationFailed;
  }
  SUBCASE("a full disk") {
    WriteBytes(Path(L"A"), "old\r\n");
    const ImportHook<WriteFile> disk(
        "WriteFile", [&, calls = 0](auto file, auto bytes, auto, auto written, auto) mutable {
          return calls++ == 0 ? disk.original(file, bytes, 1, written, nullptr) : (*written = 0, TRUE);
        });
    Write(L"new");
    CHECK(Text(L"A") == "old\r\n");
    DeleteFileW(Path(L"A").c_str());
    reason = std::wstring(log_texts::kUpdateFailed) + platform::SystemMessage(112);
  }
  CHECK(g_strCurrentLogFile.empty());
  CHECK(NewText().empty());
  const std::string line = reason.empty() ? "" : "March 07, 2025 Friday 09:41: " + Utf8(reason);
  CHECK(Utf8(log.ErrorText()) == line + (line.empty() ? "" : "\n"));
  log.OpenSystemLog();
  CHECK(NewText() == "header\r\nnew\r\n" + line + (line.empty() ? "" : "\r\n"));
}

TEST_CASE_FIXTURE(LogFolder, "an append waits for another process, and keeps others from writing meanwhile") {
  Have(L"A", 5);
  const HeldForAMoment other(Path(L"A"));
  bool alone = true;
  const ImportHook<WriteFile> write("WriteFile", [&](auto... all) {
    alone &= !platform::UniqueFile(CreateFileW(Path(L"A").c_str(), GENERIC_WRITE, platform::kShareAll,
                                               nullptr, OPEN_EXISTING, 0, nullptr));
    return write.original(all...);
  });
  platform::g_nWaitLeftMs = 50;
  Write(L"new");
  CHECK(alone);
  CHECK(Text(L"A") == "old\r\nnew\r\n");
}

TEST_CASE_FIXTURE(LogFolder,
                  "the dated log has the header, the settings and the check of a regular run, each once") {
  const auto header = [](const std::wstring& app_mode) {
    return std::wstring(
               L"====================================================\n\n"
               L"Varnexa 15.0 Tavrel Utility File Version : 1.2.3.4\n\n"
               L"Varnexa 15.0 Tavrel Utility Date/Time : Friday 09:41, March 07, 2025\n\n"
               L"Varnexa 15.0 Build Version : NA\n\n"
               L"====================================================\n\n") +
           app_mode + L"\n\n";
  };
  const std::wstring regular = header(L"App  Mode: User, User Mode: NA, Invoke Mode: Regular.");
  g_strProgramFileVersion = L"1.2.3.4";
  CHECK(platform::IsRunningAsAdmin() == (IsUserAnAdmin() != FALSE));
  ActivityLog activity;
  {
    const ImportHook<AccessCheck> granted(
        "AccessCheck", [](auto, auto, auto, auto, auto, auto, auto, BOOL* status) { return *status = TRUE; });
    activity.WriteRunHeader();
  }
  CHECK(activity.IsAdministrator());
  CHECK(Utf8(activity.LogText()) ==
        Utf8(header(L"App  Mode: Admin, User Mode: NA, Invoke Mode: Patch verfication.")));
  activity.AppendLogLine(L"");
  activity.AppendLogLine(L"settings");
  CHECK(activity.LogText().ends_with(L"verfication.\n\n\n\nsettings\n\n"));
  SheetLog sheet(activity.DatedLog());
  const ImportHook<AccessCheck> refused("AccessCheck", 5);
  CHECK_FALSE(sheet.WriteRegularRunHeader());
  sheet.Append(L"");
  sheet.Append(L"check");
  sheet.AppendSheetLine(L"page");
  sheet.AppendSheetLine(L"", true);
  sheet.AppendSheetLine(L"line", true);
  CHECK(Utf8(sheet.SheetLogText()) == Utf8(regular + L"check\n\npage\n\nline\n"));
  CHECK(Utf8(activity.DatedLog().PendingText()) == Utf8(regular + L"\n\nsettings\n\ncheck\n\n"));
  sheet.ApplyBuildVersionToLog(L"15.0.2.5");
  CHECK(activity.DatedLog().PendingText().find(L"Build Version : 15.0.2.5\n\n") != std::wstring::npos);
}
