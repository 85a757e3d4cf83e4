#include <doctest.h>

#include <windows.h>

#include <regex>

#include "expected.h"
#include "log/activity_log.h"
#include "log/administrator.h"
#include "log/sheet_log.h"
#include "log/system_log.h"
#include "platform/files.h"
#include "support/machine.h"
#include "version.h"

using support::ImportHook;
using support::Machine;
using support::ReadBytes;
using support::Utf8;

namespace {

const std::regex kNewName(
    "QRT_15_SystemTavrel_[0-3][0-9][A-Z][a-z]{2}[0-9]{4}_[01][0-9]_[0-5][0-9]_[AP]M\\.log");
const std::wregex kErrorTime(L"[A-Z][a-z]+ [0-9]{2}, [0-9]{4} [A-Z][a-z]+day [0-9]{2}:[0-9]{2}: ");
constexpr wchar_t kText[] = L"new\n\n\n\n\u00e4 \u20ac \n\n\n";
const std::wregex kHeaderTime(L"[A-Z][a-z]+day [0-9]{2}:[0-9]{2}, [A-Z][a-z]+ [0-9]{2}, [0-9]{4}");

}  // namespace

TEST_CASE(
    "log file: a wrong one, another's text lost, entries not lines; a failure that loses or leaves some") {
  for (const auto& row : support::Rows("integration/log_files.txt")) {
    CAPTURE(Utf8(row[0] + L';' + row[1]));
    const Machine machine;
    const auto path = [&](const std::wstring& name) {
      return machine.LogFolder() + L"\\" + (name.size() == 1 ? name + L"_QRT_15_SystemTavrel_.log" : name);
    };
    support::MakeFolder(path(L"Z"));
    for (const auto& [name, age] : expected::Setup(row[0])) {
      support::WriteBytes(path(name), "old\r\n");
      support::SetWriteTime(path(name), 130000000000000000 - std::stoul(age) * 10000000ull);
    }
    if (row[1] == L"no folder") support::RemoveTree(machine.LogFolder());
    auto obstacle = Obstruct(row[1], path(L"A"));
    std::optional<ImportHook<WriteFile>> disk;
    const auto write_one_byte = [&, calls = 0](HANDLE file, auto bytes, DWORD, DWORD* written, auto) mutable {
      return calls++ == 0 ? disk->original(file, bytes, 1, written, nullptr) : (*written = 0, TRUE);
    };
    if (row[1] == L"half") disk.emplace("WriteFile", write_one_byte);
    g_strCurrentLogFile.clear();
    SystemLog log;
    log.AppendText(kText);
    log.OpenSystemLog();
    obstacle.reset();
    disk.reset();
    support::MakeFolder(machine.LogFolder());
    std::wstring target = row[2] == L"-" ? L"" : path(row[2]);
    std::ptrdiff_t changed = 0;
    for (const std::wstring& name : support::FileNames(machine.LogFolder())) {
      if (row[2] == L"new" && std::regex_match(Utf8(name), kNewName)) target = path(name);
      if (ReadBytes(path(name)) != "old\r\n") ++changed;
    }
    CHECK(Utf8(g_strCurrentLogFile) == Utf8(target));
    CHECK(changed == (row[2] == L"-" ? 0 : 1));
    const std::wstring error = std::regex_replace(expected::Log(row[4]), std::wregex(L"\n\n"), L"");
    CHECK(std::regex_replace(log.ErrorText(), kErrorTime, L"at ") == (error.empty() ? L"" : error + L"\n"));
    CHECK(log.PendingText() == (row[2] == L"-" ? kText + log.ErrorText() : L""));
    if (row[2] == L"-") log.OpenSystemLog();
    const std::string text = ReadBytes(g_strCurrentLogFile).value_or("no log");
    CHECK_FALSE(platform::ReadWholeFile(g_strCurrentLogFile, 2));
    if (row[2] == L"-") CHECK(text.find("new\r\n\xc3\xa4 \xe2\x82\xac \r\n") != text.npos);
    if (row[2] != L"-") CHECK(text == std::regex_replace(Utf8(row[3]), std::regex("\\|"), "\r\n"));
  }
}

TEST_CASE("run headers: wrong order, blanks, mode or rights; an empty entry") {
  g_strProgramFileVersion = L"" TAVREL_FILE_VERSION;
  ActivityLog activity;
  activity.WriteRunHeader();
  CHECK(activity.IsAdministrator() == IsRunningAsAdmin());
  CHECK_LOG(std::regex_replace(activity.LogText(), kHeaderTime, L"now"),
            std::wstring(L"HEADER|App  Mode: ") + (IsRunningAsAdmin() ? L"Admin" : L"User") +
                L", User Mode: NA, Invoke Mode: Patch verfication.");
  const ImportHook<AccessCheck> refused("AccessCheck", 5);
  SheetLog sheet;
  CHECK_FALSE(sheet.WriteRegularRunHeader());
  CHECK_LOG(std::regex_replace(sheet.SheetLogText(), kHeaderTime, L"now"),
            L"HEADER|App  Mode: User, User Mode: NA, Invoke Mode: Regular.");
  ActivityLog entries;
  sheet.ClearSheetLog();
  for (const wchar_t* text : {L"", L"a"}) {
    entries.AppendLogLine(text);
    for (const bool single : {true, false}) sheet.AppendSheetLine(text, single);
  }
  CHECK((entries.LogText() == L"\n\na\n\n" && sheet.SheetLogText() == L"a\na\n\n"));
}
