#include <doctest.h>

#include <windows.h>

#include <map>
#include <optional>
#include <utility>

#include "platform/journaled_file.h"
#include "platform/profile.h"
#include "support/machine.h"
#include "support/text.h"

using support::ImportHook;
using support::ReadBytes;
using support::WriteBytes;

TEST_CASE("a settings file is torn, lost, cut from its links; a journal stays, or another's file goes") {
  static const std::map<std::wstring, std::string> texts{{L"old", "[S]\r\nA=1\r\n[T]\r\nB=1\r\n"},
                                                         {L"new", "[S]\r\nA=2\r\n[T]\r\nB=1\r\n"},
                                                         {L"seed", "[S]\r\nA=3\r\n"},
                                                         {L"edited", "[S]\r\nA=4\r\n"},
                                                         {L"none", "none"}};
  for (const auto& row : support::Rows("integration/journaled_files.txt")) {
    CAPTURE(support::Utf8(row[0] + L';' + row[1]));
    const support::Machine machine;
    const auto is = [&](const wchar_t* word) { return row[0].find(word) != std::wstring::npos; };
    const std::wstring folder = machine.Documents(), file = folder + L"\\korsa.ini";
    const std::wstring seed = machine.Temp() + L"\\seed", link = machine.Temp() + L"\\link";
    WriteBytes(seed, texts.at(L"seed"));
    if (!is(L"copied")) WriteBytes(file, texts.at(L"old"));
    CreateHardLinkW(link.c_str(), file.c_str(), nullptr);
    const auto beside = support::Split(row[1], L'=');
    std::optional<support::ShareLock> holder;
    bool rival = is(L"rival");
    const auto place_beside = [&] {
      if (beside.size() == 2) WriteBytes(file + L"." + beside[0], support::Utf8(beside[1]));
      if (is(L"held") || is(L"rival")) holder.emplace(file + L"." + beside[0]);
    };
    if (!rival) place_beside();
    {
      const auto tear = [&] {
        WriteBytes(file, is(L"busy") ? texts.at(L"edited") : "[S]\r\n");
        if (is(L"busy")) return support::Fail(ERROR_SHARING_VIOLATION, FALSE);
        if (!is(L"killed")) return support::Fail(ERROR_DISK_FULL, is(L"quietly") ? TRUE : FALSE);
        holder.emplace(file, FILE_SHARE_READ);
        return support::Fail(ERROR_WRITE_FAULT, FALSE);
      };
      const bool torn = is(L"torn") || is(L"killed") || is(L"busy");
      const ImportHook<WritePrivateProfileStringW> write(
          "WritePrivateProfileStringW", [&](auto... all) { return torn ? tear() : write.original(all...); });
      const ImportHook<CopyFileW> copy("CopyFileW", [&](auto... all) {
        const bool no_room = is(L"no room beside") && !support::FileNames(folder).empty();
        if (no_room) return support::Fail(ERROR_DISK_FULL, FALSE);
        return torn ? tear() : copy.original(all...);
      });
      const ImportHook<CreateFileW> create("CreateFileW", [&](auto path, auto... all) {
        const bool is_journal = std::wstring_view(path).ends_with(L".journal");
        if (is_journal && std::exchange(rival, false)) place_beside();
        const bool refused = is(L"no journal") && is_journal;
        if (refused) return support::Fail(is(L"112") ? ERROR_DISK_FULL : 5, INVALID_HANDLE_VALUE);
        return create.original(path, all...);
      });
      if (is(L"copied")) CHECK(platform::JournaledFile(file).CopyFrom(seed) == !torn);
      if (!is(L"copied")) platform::WriteProfileText(file, L"S", L"A", L"2");
    }
    CHECK(support::FileNames(folder).size() == (is(L"killed") || !row[3].empty() ? 2 : row[2] != L"none"));
    if (is(L"killed")) holder.reset();
    if (is(L"edited")) WriteBytes(file, texts.at(L"edited")), support::SetWriteTime(file, 1ull << 58);
    if (is(L"replaced")) WriteBytes(seed, texts.at(L"edited")), support::CopyOver(seed, file + L"+");
    if (is(L"replaced")) MoveFileExW((file + L"+").c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
    platform::ReadProfileText(file, L"S", L"A", 9);
    holder.reset();
    CHECK(ReadBytes(file).value_or("none") == texts.at(row[2]));
    if (!is(L"copied") && !is(L"replaced")) CHECK(ReadBytes(link) == ReadBytes(file));
    if (!row[3].empty()) CHECK(ReadBytes(file + L"." + row[3]) == support::Utf8(beside[1]));
    CHECK(support::FileNames(folder).size() == std::size_t(row[2] != L"none") + !row[3].empty());
  }
}
