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

using support::Machine;
using support::ReadBytes;

namespace {

/// A row: the files that are there, each with its age in seconds and the text "old"; the one that is written
/// to; its text.
constexpr wchar_t kFolders[] =
    LR"(
;new;new|
A=5 x_qrt_15_systemtavrel_.log=1 QRT_15_SystemTavrel_.txt=1;A;old|new|
A=5 B=6;A;old|new|
A=5 B=5;new;new|
A=6 B=4 C=5;B;old|new|
A=4 B=4 C=5;B;old|new|
A=5 held=1;new;old|new|
A=5 held=0;new;Error in System Tavrel Log File updates while reading old history informations.|new|
)";
const std::regex kNewName(
    "QRT_15_SystemTavrel_[0-3][0-9][A-Z][a-z]{2}[0-9]{4}_[01][0-9]_[0-5][0-9]_[AP]M\\.log");

}  // namespace

TEST_CASE("log file: written into the wrong file, over another's text, or not as one entry a line") {
  for (const std::wstring& row : support::Split(kFolders, L'\n')) {
    if (row.empty()) continue;
    CAPTURE(support::Utf8(row));
    const auto columns = support::Split(row, L';');
    const Machine machine;
    const auto path = [&](const std::wstring& name) {
      return machine.LogFolder() + L"\\" + (name.size() == 1 ? name + L"_QRT_15_SystemTavrel_.log" : name);
    };
    support::MakeFolder(path(L"Z"));
    std::shared_ptr<support::ShareLock> lock;
    for (const std::wstring& word : support::Split(columns[0], L' ')) {
      const std::size_t equals = word.find(L'=');
      if (word.empty()) continue;
      const unsigned number = std::stoul(word.substr(equals + 1));
      if (word.starts_with(L"held")) {
        lock = std::make_shared<support::ShareLock>(path(L"A"), number);
      } else {
        support::WriteBytes(path(word.substr(0, equals)), "old\r\n");
        support::SetWriteTime(path(word.substr(0, equals)), 130000000000000000 - number * 10000000ull);
      }
    }
    SystemLog log;
    log.AppendText(L"new\n\n");
    log.OpenSystemLog();
    lock.reset();
    std::wstring target = path(columns[1]);
    std::size_t changed = 0;
    for (const std::wstring& name : support::FileNames(machine.LogFolder())) {
      if (std::regex_match(support::Utf8(name), kNewName) && columns[1] == L"new") target = path(name);
      if (ReadBytes(path(name)) != "old\r\n") ++changed;
    }
    CHECK(g_strCurrentLogFile == target);
    CHECK(ReadBytes(target) == std::regex_replace(support::Utf8(columns[2]), std::regex("\\|"), "\r\n"));
    CHECK(changed == 1);
    CHECK((log.PendingText().empty() && log.ErrorText().empty()));
  }
}

TEST_CASE("log file: a second run of the minute cuts the first one's text, or text loses blanks or letters") {
  const Machine machine;
  support::MakeFolder(machine.LogFolder());
  for (const wchar_t* text : {L"one\n\n\n\ntwo\n\n", L"\u00e4 \u20ac \n\n\n"}) {
    SystemLog log;
    log.AppendText(text);
    log.OpenSystemLog();
  }
  CHECK(ReadBytes(g_strCurrentLogFile) == "one\r\ntwo\r\n\xc3\xa4 \xe2\x82\xac \r\n");
}

TEST_CASE("log file: a failure speaks to the user, loses the pending text or leaves half of it in the file") {
  const struct {
    const wchar_t* refused;  // null: there is no folder
    std::wstring error;
  } cases[] = {
      {nullptr, L""},
      {L"CreateFileW-5", L"Error in System Tavrel Log File creation."},
      {L"WriteFile-112", L"Error in System Tavrel Log File updates." + platform::SystemMessage(112)}};
  for (const auto& c : cases) {
    const Machine machine;
    if (c.refused != nullptr) support::MakeFolder(machine.LogFolder());
    g_strCurrentLogFile.clear();
    SystemLog log;
    log.AppendText(L"new\n\n");
    auto hook = c.refused != nullptr ? Refuse(c.refused) : nullptr;
    log.OpenSystemLog();
    hook.reset();
    CHECK(g_strCurrentLogFile.empty());
    CHECK(log.PendingText() == L"new\n\n" + log.ErrorText());
    const std::regex prefix("[A-Z][a-z]+ [0-9]{2}, [0-9]{4} [A-Z][a-z]+day [0-9]{2}:[0-9]{2}: ");
    const std::string error = std::regex_replace(support::Utf8(log.ErrorText()), prefix, "at ");
    CHECK(error == (c.error.empty() ? "" : "at " + support::Utf8(c.error) + "\n"));
    log.OpenSystemLog();
    CHECK(g_strCurrentLogFile.empty() == c.error.empty());
    if (!c.error.empty()) CHECK(ReadBytes(g_strCurrentLogFile)->starts_with("new\r\n"));
  }
}

TEST_CASE("log file: half an entry left in it by a disk that fills up") {
  const Machine machine;
  support::MakeFolder(machine.LogFolder());
  support::WriteBytes(machine.LogFolder() + L"\\QRT_15_SystemTavrel_.log", "old\r\n");
  unsigned calls = 0;
  const support::ImportHook<WriteFile> half(
      "WriteFile", [&](HANDLE file, auto bytes, DWORD, DWORD* written, auto) {
        return calls++ == 0 ? half.original(file, bytes, 1, written, nullptr)
                            : support::Fail(ERROR_DISK_FULL, FALSE);
      });
  SystemLog log;
  log.AppendText(L"new");
  log.OpenSystemLog();
  CHECK(calls == 2);
  CHECK(ReadBytes(machine.LogFolder() + L"\\QRT_15_SystemTavrel_.log") == "old\r\n");
}

TEST_CASE("run headers: wrong order, blanks, mode or rights") {
  g_strProgramFileVersion = L"2.0.3.0";
  const std::string rule(52, '=');
  const std::regex date("[A-Z][a-z]+day [0-9]{2}:[0-9]{2}, [A-Z][a-z]+ [0-9]{2}, [0-9]{4}");
  const auto header = [&](const std::string& last) {
    return rule +
           "\n\nVarnexa 15.0 Tavrel Utility File Version : 2.0.3.0\n\nVarnexa 15.0 Tavrel Utility Date/Time "
           ": " +
           "now\n\nVarnexa 15.0 Build Version : NA\n\n" + rule + "\n\nApp  Mode: " + last + ".\n\n";
  };
  ActivityLog activity;
  activity.WriteRunHeader();
  CHECK(activity.IsAdministrator() == IsRunningAsAdmin());
  CHECK(std::regex_replace(support::Utf8(activity.LogText()), date, "now") ==
        header(std::string(IsRunningAsAdmin() ? "Admin" : "User") +
               ", User Mode: NA, Invoke Mode: Patch verfication"));
  const support::ImportHook<AccessCheck> refused("AccessCheck", 5);
  SheetLog sheet;
  CHECK_FALSE(sheet.WriteRegularRunHeader());
  CHECK(std::regex_replace(support::Utf8(sheet.SheetLogText()), date, "now") ==
        header("User, User Mode: NA, Invoke Mode: Regular"));
  CHECK(g_strBuildLine == L"Varnexa 15.0 Build Version : NA");
  ActivityLog entries;
  sheet.ClearSheetLog();
  for (const wchar_t* text : {L"", L"a"}) entries.AppendLogLine(text), sheet.AppendSheetLine(text, true);
  CHECK((entries.LogText() == L"\n\na\n\n" && sheet.SheetLogText() == L"a\n"));
}
