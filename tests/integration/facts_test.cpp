#include <doctest.h>

#include <windows.h>

#include <map>
#include <optional>
#include <regex>
#include <vector>

#include "expected.h"
#include "platform/sharing.h"
#include "settings/registered_data.h"
#include "settings/run_state.h"
#include "settings/update_settings.h"
#include "support/import_hook.h"
#include "support/machine.h"
#include "text/text.h"
#include "ui/update_options.h"

using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Rows;
using support::Split;
using support::Utf8;

namespace {

constexpr Layout kLayouts[] = {Layout::two, Layout::one};

/// Writes out the word of the table.
std::wstring Expand(std::wstring text) {
  text::ReplaceAll(text, L"LONG", std::wstring(127, L'x'));
  return text;
}

/// Sets a value of the table.
void SetValue(const std::wstring& value) {
  static const std::wregex form(L"([12])([MU]) (\\w+)=([^#]*)(#(\\d)#(\\d+))?");
  std::wsmatch part;
  REQUIRE(std::regex_match(value, part, form));
  const Layout layout = kLayouts[part[1] == L"1"];
  const std::wstring text = Expand(part[4]);
  const std::size_t size = part[7].matched ? std::stoul(part[7]) : text.size() * 2 + 2;
  support::SetRegistryBytes(part[2] == L"M" ? support::MakerKey(layout) : support::UninstallKey(layout),
                            part[3].str().c_str(), part[6].matched ? std::stoul(part[6]) : REG_SZ,
                            {reinterpret_cast<const char*>(text.c_str()), size});
}

/// A settings file with the lines of a column; none for "-".
std::optional<std::string> FileOf(const std::wstring& lines) {
  if (lines == L"-") return std::nullopt;
  return "[KORSA_URL]\r\n" + std::regex_replace(Utf8(lines), std::regex("\\|"), "\r\n") + "\r\n";
}

}  // namespace

TEST_CASE("registered data: each reader reads its key or the alternative one, and logs the result") {
  for (const auto& row : Rows("integration/registry.txt", 6, 6)) {
    CAPTURE(Utf8(row[0] + L';' + row[1] + L';' + row[2]));
    const Machine machine;
    for (const std::wstring& value : Split(row[2])) SetValue(value);
    RunState run;
    run.RegistryModeOne = row[1] != L"2";
    run.BuildMakerKeyPath();
    run.BuildUninstallKeyPath();
    run.InstallPath = run.IconPath = L"old";
    RegisteredDataEntries data(run, run);
    data.TagOne = data.TagTwo = data.TagThree = data.ClientVersion = L"old";
    using Reader = void (RegisteredDataEntries::*)();
    const std::map<std::wstring, std::pair<Reader, const std::wstring*>> readers{
        {L"one", {&RegisteredDataEntries::ReadTagOne, &data.TagOne}},
        {L"two", {&RegisteredDataEntries::ReadTagTwo, &data.TagTwo}},
        {L"three", {&RegisteredDataEntries::ReadTagThree, &data.TagThree}},
        {L"path", {&RegisteredDataEntries::ReadInstallPath, &run.InstallPath}},
        {L"logged path", {&RegisteredDataEntries::ReadInstallPathLogged, &run.InstallPath}},
        {L"version", {&RegisteredDataEntries::ReadClientVersion, &data.ClientVersion}}};
    REQUIRE((row[1] == L"1" || row[1] == L"2" || row[1] == L"5"));
    const auto hook = Obstruct(row[1] == L"5" ? L"RegOpenKeyExW-5" : L"");
    if (row[0] == L"mode") {
      CHECK(data.IdentifyRegistryMode() == (row[4] == L"1"));
    } else {
      const auto& [read, field] = readers.at(row[0]);
      (data.*read)();
      CHECK(Utf8(*field) == Utf8(Expand(row[3])));
    }
    CHECK(run.IconPath == (row[0] == L"two" ? row[3] : L"old"));
    CHECK(run.RegistryModeOne == (row[4] == L"1"));
    CHECK(run.MakerKeyPath == support::MakerKey(kLayouts[row[4] == L"1"]));
    CHECK(run.UninstallKeyPath == support::UninstallKey(kLayouts[row[4] == L"1"]));
    CHECK_LOG(run.LogText(), row[5]);
  }
}

TEST_CASE("the settings file is prepared from the user's own or the seed, and a failure stops nothing") {
  for (const Row& row : Rows("integration/settings_start.txt", 7, 7)) {
    CAPTURE(Utf8(row[0] + L';' + row[1] + L';' + row[2] + L';' + row[3]));
    platform::g_nWaitLeftMs = 0;
    Machine machine;
    support::MakeFolder(machine.Documents() + row[0]);
    if (row[1] != L"-") machine.WriteSettings(Utf8(row[1]) + "\r\n");
    const auto seed = FileOf(row[2]);
    if (seed) support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", *seed);
    RunState run;
    std::shared_ptr<void> obstacle = Obstruct(row[3], machine.SettingsFile());
    CHECK((run.PrepareServerSettings() ? L"yes" : L"no") == row[4]);
    obstacle.reset();
    CHECK(ReadBytes(machine.SettingsFile()) == FileOf(row[5]));
    CHECK_LOG(run.LogText(), row[6]);
    CHECK_LOG(std::regex_replace(run.NotesText(), std::wregex(L"\n"), L"\n\n"), row[6]);
  }
}

TEST_CASE("a settings folder and file that another start makes at the same moment are used") {
  Machine machine;
  const auto seed = FileOf(L"CHECKUPDATES=FALSE");
  support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", *seed);
  const support::ImportHook<CreateDirectoryW> race("CreateDirectoryW", [&](auto path, auto security) {
    if (!std::wstring_view(path).ends_with(L"QRT15\\")) race.original(path, security);
    return race.original(path, security);
  });
  const support::ImportHook<CreateFileW> file_race("CreateFileW", [&](auto path, auto... all) {
    if (path == machine.SettingsFile() && !ReadBytes(path)) support::WriteBytes(path, *seed);
    return file_race.original(path, all...);
  });
  RunState run;
  CHECK(!run.PrepareServerSettings());
}

TEST_CASE(
    "each key of the settings file is read, and a default is written only where the error key has none") {
  for (const Row& row : Rows("integration/settings_keys.txt", 4, 4)) {
    CAPTURE(Utf8(row[0]));
    REQUIRE((row[1].empty() || row[1] == L"url"));
    Machine machine;
    const auto before = FileOf(row[0]);
    machine.WriteSettings("");
    if (before) support::WriteBytes(machine.SettingsFile(), *before);
    const std::wstring path = before ? machine.SettingsFile() : L"";
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CHECK(ReadBytes(path) == before);
      UpdateSettings settings;
      bool url_mode = row[1] == L"url";
      settings.ReadUpdateSettings(path, url_mode, write_back);
      CHECK(Utf8(settings.UpdateLocation) + " " + std::to_string(settings.TimeoutMs) +
                (settings.IgnorePatchError ? " ignore" : "") + (url_mode ? " url" : "") ==
            Utf8(row[2]));
    }
    CHECK(ReadBytes(path) == (row[3].empty() ? before : FileOf(row[3])));
  }
}

TEST_CASE("a value that could not be read, or only in part, is read again before a default replaces it") {
  const std::string lines = "CHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=TRUE\r\n";
  for (const wchar_t* const text : {L"", L"T"}) {
    Machine machine;
    machine.WriteSettings(lines);
    const std::wstring path = machine.SettingsFile();
    const support::ImportHook<GetPrivateProfileStringW> unreadable(
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

TEST_CASE("the page writes the default of an option that the start could not repair") {
  Machine machine;
  machine.WriteSettings("CHECKUPDATES=maybe\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  UpdateOptions().LoadUpdateOptions(machine.SettingsFile());
  CHECK(ReadBytes(machine.SettingsFile()) == FileOf(L"CHECKUPDATES=TRUE|IGNORE_PATCH_ERROR=TRUE"));
}
