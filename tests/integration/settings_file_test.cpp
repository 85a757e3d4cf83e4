#include <doctest.h>

#include <windows.h>

#include <optional>

#include "platform/file_rewrite.h"
#include "platform/profile.h"
#include "platform/wait.h"
#include "support/import_hook.h"
#include "support/machine.h"

using support::ImportHook;
using support::ReadBytes;
using support::ShareLock;
using support::WriteBytes;

namespace {

const std::string kOld = "[S]\r\nA=longer-than-the-new-one\r\n[T]\r\nB=1\r\n";
const std::string kNew = "[S]\r\nA=2\r\n[T]\r\nB=1\r\n";

/// A settings file; each write is checked for files that it leaves.
struct SettingsFile {
  support::Machine machine;
  std::wstring folder = machine.Documents(), path = folder + L"\\korsa.ini";

  explicit SettingsFile(const std::string& bytes = kOld) { WriteBytes(path, bytes); }
  /// The content after a value was written. `others`: files beside it.
  std::string Write(std::size_t others = 0, const wchar_t* value = L"2") {
    platform::g_nWaitLeftMs = 100;
    platform::WriteProfileText(path, L"S", L"A", value);
    CHECK(support::FileNames(folder).size() == 1 + others);
    CHECK(support::FileNames(machine.Temp()).empty());
    return ReadBytes(path).value_or("missing");
  }
};

/// While it exists, one call writes half of what is asked for, as on a disk that becomes full.
struct FullDisk {
  const int call;  ///< counted from 1
  int calls = 0;
  const ImportHook<WriteFile> hook{"WriteFile", [this](auto file, auto bytes, auto size, auto written, auto) {
                                     return hook.original(file, bytes, ++calls == call ? size / 2 : size,
                                                          written, nullptr);
                                   }};
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
}

TEST_CASE("a failure while the file is written leaves its old content") {
  for (const wchar_t* const value : {L"2", L"longer-than-the-old-text-in-it"}) {
    SettingsFile file;
    const FullDisk disk{.call = 2};
    CHECK(file.Write(0, value) == kOld);
    CHECK(disk.calls == 3);
  }
  const ImportHook<FlushFileBuffers> lost("FlushFileBuffers", ERROR_WRITE_FAULT);
  CHECK(SettingsFile().Write() == kOld);
}

TEST_CASE("an edited copy in which more than one line differs is refused") {
  for (const char* const copy :
       {"", "[S]\r\nA=2\r\n", "[S]\r\nA=\r\n[T]\r\nB=1\r\n", "[S]\r\nA=2\r\n[T]\r\nB=2\r\n"}) {
    const ImportHook<WritePrivateProfileStringW> edit(
        "WritePrivateProfileStringW",
        [&](auto, auto, auto, auto path) { return WriteBytes(path, copy), TRUE; });
    CHECK(SettingsFile().Write() == kOld);
  }
}

TEST_CASE("a write waits for a process that holds the file, and changes nothing when that does not end") {
  SettingsFile file;
  std::optional<ShareLock> holder(std::in_place, file.path, static_cast<DWORD>(FILE_SHARE_READ));
  CHECK(file.Write() == kOld);
  CHECK(platform::g_nWaitLeftMs == 0);
  int opened = 0;
  const ImportHook<CreateFileW> open("CreateFileW", [&](auto... all) {
    if (++opened == 2) holder.reset();
    return open.original(all...);
  });
  CHECK(file.Write() == kNew);
}

TEST_CASE("a new file has all its bytes or is not there, and an existing one is not replaced") {
  SettingsFile file;
  CHECK(!platform::CreateWholeFile(file.path, kNew));
  CHECK(GetLastError() == ERROR_ALREADY_EXISTS);
  CHECK(ReadBytes(file.path) == kOld);

  const auto create = [&] {
    DeleteFileW(file.path.c_str());
    const DWORD error = platform::CreateWholeFile(file.path, kNew) ? ERROR_SUCCESS : GetLastError();
    CHECK(ReadBytes(file.path).value_or("") == (error == ERROR_SUCCESS ? kNew : ""));
    return error;
  };
  CHECK(create() == ERROR_SUCCESS);
  const ImportHook<MoveFileExW> other_volume("MoveFileExW", ERROR_NOT_SAME_DEVICE);
  CHECK(create() == ERROR_SUCCESS);
  const FullDisk disk{.call = 2};
  CHECK(create() == ERROR_DISK_FULL);
  CHECK(support::FileNames(file.machine.Temp()).empty());
}
