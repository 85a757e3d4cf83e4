#include <doctest.h>

#include <windows.h>

#include <map>

#include "platform/files.h"
#include "platform/profile.h"
#include "platform/sharing.h"
#include "settings/run_state.h"
#include "settings/update_settings.h"
#include "support/machine.h"
#include "ui/update_options.h"

using namespace support;

namespace {

const std::string kOld = "[S]\r\nA=longer-than-the-new-one\r\n[T]\r\nB=1\r\n";
const std::string kNew = "[S]\r\nA=2\r\n[T]\r\nB=1\r\n";

/// A settings file; each write is checked for files that it leaves.
struct SettingsFile {
  Machine machine;
  std::wstring folder = machine.documents, path = folder + L"\\korsa.ini";

  explicit SettingsFile(const std::string& bytes = kOld) { WriteBytes(path, bytes); }
  /// The content after a value was written. `others`: files beside it.
  std::string Write(std::size_t others = 0, const wchar_t* value = L"2") {
    platform::g_nWaitLeftMs = platform::kWaitMs;
    platform::WriteProfileText(path, L"S", L"A", value);
    CHECK(FileNames(folder).size() == 1 + others);
    CHECK(FileNames(machine.Temp()).empty());
    return ReadBytes(path).value_or("missing");
  }
};

/// Makes the pauses of this program short, and counts the milliseconds that it asked for.
struct Pauses {
  DWORD waited = 0;
  const ImportHook<Sleep> sleep{"Sleep", [this](DWORD pause) { waited += pause; }};
  const ImportHook<GetTickCount64> clock{"GetTickCount64", [this] { return ULONGLONG{waited}; }};
};

}  // namespace

TEST_CASE("a value is written in the file's place, and everything else in the file stays") {
  SettingsFile linked;
  REQUIRE(CreateHardLinkW((linked.folder + L"\\link").c_str(), linked.path.c_str(), nullptr));
  CHECK(linked.Write(1) == kNew);
  CHECK(ReadBytes(linked.folder + L"\\link") == kNew);
  CHECK(linked.Write(1, L"longer-than-the-new-one") == kOld);
  for (const DWORD attribute : {DWORD{FILE_ATTRIBUTE_READONLY}, DWORD{FILE_ATTRIBUTE_HIDDEN}}) {
    SettingsFile file;
    REQUIRE(SetFileAttributesW(file.path.c_str(), attribute));
    CHECK(file.Write() == (attribute == FILE_ATTRIBUTE_READONLY ? kOld : kNew));
    CHECK((GetFileAttributesW(file.path.c_str()) & attribute) != 0);
    SetFileAttributesW(file.path.c_str(), FILE_ATTRIBUTE_NORMAL);
  }

  using namespace std::string_literals;
  CHECK(SettingsFile("\xff\xfe[\0S\0]\0\n\0A\0=\0\xe4\0\xe4\0\xe4\0\r\0\n\0"s).Write() ==
        "\xff\xfe[\0S\0]\0\r\0\n\0A\0=\0"
        "2\0\r\0\n\0"s);
  CHECK(SettingsFile("[T]\r\nB=1\r\n").Write() == "[T]\r\nB=1\r\n[S]\r\nA=2\r\n");
  CHECK(SettingsFile("[S]\r\nA=1").Write() == "[S]\r\nA=2\r\n");
  SettingsFile deleted;
  DeleteFileW(deleted.path.c_str());
  CHECK(deleted.Write() == "[S]\r\nA=2\r\n");
  const std::string largest = kOld + std::string((1 << 20) - kOld.size(), '\n');
  CHECK(SettingsFile(largest).Write() == kNew);
  CHECK(SettingsFile(largest + "\n").Write() == largest + "\n");
}

TEST_CASE(
    "a failure while the file is written leaves its old content, and a failure afterwards the new one") {
  for (const wchar_t* const value : {L"2", L"longer-than-the-old-text-in-it"}) {
    SettingsFile file;
    int calls = 0;
    // The second call writes half of what is asked for, as on a disk that becomes full.
    const ImportHook<WriteFile> disk(
        "WriteFile", [&](auto handle, auto bytes, auto size, auto written, auto) {
          return disk.original(handle, bytes, ++calls == 2 ? size / 2 : size, written, nullptr);
        });
    CHECK(file.Write(0, value) == kOld);
    CHECK(calls == 3);
  }
  const ImportHook<FlushFileBuffers> lost("FlushFileBuffers", ERROR_WRITE_FAULT);
  CHECK(SettingsFile().Write() == kNew);
}

TEST_CASE("a write is alone, and a process that ends between its calls leaves no tail of the old content") {
  SettingsFile file;
  bool alone = true;
  const ImportHook<SetEndOfFile> end("SetEndOfFile", [&](HANDLE handle) {
    alone &= !platform::UniqueFile(CreateFileW(file.path.c_str(), GENERIC_WRITE, platform::kShareAll, nullptr,
                                               OPEN_EXISTING, 0, nullptr));
    const std::string left = ReadBytes(file.path).value_or("");
    CHECK(left == kNew + std::string(kOld.size() - kNew.size(), '\n'));
    return end.original(handle);
  });
  CHECK(file.Write() == kNew);
  CHECK(alone);
}

TEST_CASE("a write waits for a process that holds the file or locks it, and gives up in time") {
  SettingsFile file;
  {
    const ShareLock holder(file.path, FILE_SHARE_READ);
    const Pauses pauses;
    CHECK(file.Write() == kOld);
  }
  {
    const HeldForAMoment holder(file.path);
    CHECK(file.Write() == kNew);
  }
  int locked = 2;
  const ImportHook<WriteFile> write("WriteFile", [&](auto handle, auto bytes, auto size, auto written, auto) {
    if (std::string_view(static_cast<const char*>(bytes), size).starts_with(kOld) && locked-- > 0)
      return Fail(ERROR_LOCK_VIOLATION, FALSE);
    return write.original(handle, bytes, size, written, nullptr);
  });
  CHECK(file.Write(0, L"longer-than-the-new-one") == kOld);
}

TEST_CASE("all waits end within a second, and leave the log its time") {
  const Pauses pauses;
  platform::g_nWaitLeftMs = platform::kWaitMs;
  const auto waited_after = [&](platform::Purpose purpose) {
    CHECK_FALSE(platform::WaitFor(purpose, [] { return false; }));
    return pauses.waited;
  };
  CHECK(waited_after(platform::Purpose::list_mutex) <= 500);
  CHECK(waited_after(platform::Purpose::file) <= 700);
  const DWORD before_log = pauses.waited;
  const DWORD all = waited_after(platform::Purpose::log);
  CHECK((all <= 1000 && all - before_log >= 280));
}

TEST_CASE("a value that could not be read, or only in part, is read again before a default replaces it") {
  const std::string lines = "CHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n";
  for (const wchar_t* const text : {L"", L"T"}) {
    Machine machine;
    machine.WriteSettings(lines);
    const std::wstring path = machine.SettingsFile();
    const ImportHook<GetPrivateProfileStringW> unreadable(
        "GetPrivateProfileStringW",
        [&](auto section, auto key, auto other, auto value, DWORD size, auto file) -> DWORD {
          if (file != path) return unreadable.original(section, key, other, value, size, file);
          return static_cast<DWORD>(lstrlenW(lstrcpynW(value, text, static_cast<int>(size))));
        });
    RunState run;
    CHECK_FALSE(run.PrepareServerSettings());
    bool url_mode = false;
    UpdateSettings settings;
    settings.ReadUpdateSettings(path, url_mode, UpdateSettings::WriteBack::defaults);
    CHECK(settings.IgnorePatchError);
    UpdateOptions options;
    options.LoadUpdateOptions(path);
    CHECK(options.m_bCheckOnStartup == 0);
    CHECK(ReadBytes(path) == "[KORSA_URL]\r\n" + lines);
    options.WriteCheckUpdatesKey(true);
    CHECK(ReadBytes(path) == "[KORSA_URL]\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  }
}

TEST_CASE("the page writes the defaults that the start could not, and leaves a wrong value to be seen") {
  const std::map<std::string, std::string> rows{
      {"CHECKUPDATES=maybe\r\n", "CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n"},
      {"CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=maybe\r\n",
       "CHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=maybe\r\n"},
  };
  for (const auto& [before, after] : rows) {
    Machine machine;
    machine.WriteSettings(before);
    UpdateOptions options;
    options.LoadUpdateOptions(machine.SettingsFile());
    CHECK(options.m_bCheckOnStartup == 1);
    CHECK(options.m_bHideNetworkErrors == 0);
    CHECK(ReadBytes(machine.SettingsFile()) == "[KORSA_URL]\r\n" + after);
  }
}
