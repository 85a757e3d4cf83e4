#include <doctest.h>

#include <windows.h>

#include <algorithm>

#include "platform/profile.h"
#include "platform/sharing.h"
#include "support/machine.h"
#include "support/table.h"
#include "update/list_file.h"
#include "update/section_names.h"

using namespace support;

TEST_CASE("list file: only the file that was written is read, and no other process can change it meanwhile") {
  const Machine machine;
  const std::wstring path = machine.UpdateList();
  std::vector<std::wstring> names;
  ListFile file;
  WriteBytes(path, "[old]");
  platform::g_nWaitLeftMs = platform::kWaitMs;
  std::optional<HeldForAMoment> other_process(path);
  REQUIRE(file.Create());
  other_process.reset();
  REQUIRE(file.Write("[a]\r\n"));
  file.Close();
  const auto open_for_writing = [&path] {
    return platform::UniqueFile(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            nullptr, OPEN_EXISTING, 0, nullptr));
  };
  {
    const ImportHook<GetPrivateProfileSectionNamesW> reading(
        "GetPrivateProfileSectionNamesW", [&](LPWSTR buffer, DWORD size, LPCWSTR name) {
          CHECK_FALSE((open_for_writing() || DeleteFileW(path.c_str())));
          return reading.original(buffer, size, name);
        });
    CHECK(file.ReadNames(names));
  }
  CHECK(names == std::vector<std::wstring>{L"a"});

  platform::UniqueFile writer = open_for_writing();
  {
    const ImportHook<Sleep> pause("Sleep", [&writer](DWORD) { writer.reset(); });
    CHECK(file.ReadNames(names));
  }
  writer = open_for_writing();
  platform::g_nWaitLeftMs = 50;
  CHECK_FALSE(file.ReadNames(names));
  CHECK(GetLastError() == ERROR_SHARING_VIOLATION);
  writer.reset();

  const std::wstring other = machine.Temp() + L"\\other.ini";
  WriteBytes(other, "[b]\r\n");
  CHECK_FALSE((DeleteFileW(path.c_str()) || MoveFileW(path.c_str(), (path + L"x").c_str()) ||
               MoveFileExW(other.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)));
  CHECK(names.size() == 2);
}

TEST_CASE("section names: the functions of the system find the names that the pure reader finds") {
  for (const Row& row : ReadTable("unit/section_names.txt")) {
    const Machine machine;
    const std::wstring file = machine.Temp() + L"\\list.ini";
    WriteBytes(file, Bytes(row.input));
    std::vector<std::wstring> names, whole;
    AppendSectionNames(platform::ReadProfileSectionNames(file, kSectionNamesCapacity), names);
    AppendSectionNames(platform::ReadProfileSectionNames(file, 8), whole);
    std::wstring joined = std::to_wstring(whole.size());
    for (const std::wstring& name : names) joined.append(L"|").append(name);
    // The pure reader leaves the code page open.
    if (!row.input.starts_with(L"\u00FF\u00FE"))
      std::replace(joined.begin(), joined.end(), L'\u00E9', wchar_t{0xDCE9});
    CHECK(Literal(joined) == Literal(row.result));
  }
}
