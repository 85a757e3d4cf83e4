#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <optional>
#include <regex>
#include <vector>

#include "expected.h"
#include "platform/wait.h"
#include "settings/registered_data.h"
#include "settings/run_state.h"
#include "settings/update_settings.h"
#include "support/import_hook.h"
#include "support/machine.h"
#include "ui/update_options.h"

using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Rows;
using support::Split;
using support::Utf8;

namespace {

constexpr Layout kLayouts[] = {Layout::two, Layout::one};

/// Writes out "x{128}".
std::wstring Expand(const std::wstring& text) {
  std::wsmatch found;
  if (!std::regex_search(text, found, std::wregex(L"x\\{(\\d+)\\}"))) return text;
  return found.prefix().str() + std::wstring(std::stoul(found[1]), L'x') + found.suffix().str();
}

/// Sets a value of the table.
void SetValue(const std::wstring& value) {
  REQUIRE(std::regex_match(value, std::wregex(L"[12][MU] \\w+=.*")));
  const auto parts = Split(Expand(value), L'#');
  const std::size_t equals = parts[0].find(L'=');
  std::wstring text = parts[0].substr(equals + 1);
  const auto number = [&](std::size_t i, std::size_t usual) {
    return parts.size() > i ? std::stoul(parts[i]) : usual;
  };
  const Layout layout = kLayouts[value[0] == L'1'];
  support::SetRegistryBytes(value[1] == L'M' ? support::MakerKey(layout) : support::UninstallKey(layout),
                            value.substr(3, equals - 3).c_str(), number(1, REG_SZ),
                            {reinterpret_cast<const char*>(text.c_str()), number(2, text.size() * 2 + 2)});
}

std::string FileOf(const char* lines) {
  return "[KORSA_URL]\r\n" + std::regex_replace(lines, std::regex("\\|"), "\r\n") + "\r\n";
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
    const struct {
      const wchar_t* name;
      void (RegisteredDataEntries::*read)();
      std::wstring& field;
    } readers[] = {{L"one", &RegisteredDataEntries::ReadTagOne, data.TagOne},
                   {L"two", &RegisteredDataEntries::ReadTagTwo, data.TagTwo},
                   {L"three", &RegisteredDataEntries::ReadTagThree, data.TagThree},
                   {L"path", &RegisteredDataEntries::ReadInstallPath, run.InstallPath},
                   {L"logged path", &RegisteredDataEntries::ReadInstallPathLogged, run.InstallPath},
                   {L"version", &RegisteredDataEntries::ReadClientVersion, data.ClientVersion}};
    REQUIRE((row[1] == L"1" || row[1] == L"2" || row[1] == L"5"));
    const auto hook = Obstruct(row[1] == L"5" ? L"RegOpenKeyExW-5" : L"");
    if (row[0] == L"mode") {
      CHECK(data.IdentifyRegistryMode() == (row[4] == L"1"));
    } else {
      const auto reader = std::find_if(std::begin(readers), std::end(readers),
                                       [&row](const auto& one) { return row[0] == one.name; });
      REQUIRE(reader != std::end(readers));
      (data.*reader->read)();
      CHECK(Utf8(reader->field) == Utf8(Expand(row[3])));
    }
    CHECK(run.IconPath == (row[0] == L"two" ? row[3] : L"old"));
    CHECK(run.RegistryModeOne == (row[4] == L"1"));
    CHECK(run.MakerKeyPath == support::MakerKey(kLayouts[row[4] == L"1"]));
    CHECK(run.UninstallKeyPath == support::UninstallKey(kLayouts[row[4] == L"1"]));
    CHECK_LOG(run.LogText(), row[5]);
  }
}

TEST_CASE("the settings file is prepared from the user's own or the seed, and a failure stops nothing") {
  static constexpr wchar_t kMade[] = L"Profile settings directory created.|Server settings INI file copied.";
  static constexpr wchar_t kExists[] = L"Server settings INI file already exists.";
  struct Case {
    const wchar_t* folder = L"\\Varnexa\\QRT15";  ///< is there at the start
    const char* own = nullptr;                    ///< the user's file, without its heading
    const char* seed = nullptr;                   ///< the same beside the program
    const wchar_t* obstacle = L"";
    bool checks = true;
    const char* left = nullptr;  ///< the user's file in the end
    const wchar_t* log = kExists;
  };
  for (const Case& row : std::vector<Case>{
           {.folder = L"", .seed = "CHECKUPDATES=TRUE", .left = "CHECKUPDATES=TRUE", .log = kMade},
           {.folder = L"\\Varnexa",
           .seed = "CHECKUPDATES=FALSE",
           .checks = false,
           .left = "CHECKUPDATES=FALSE",
           .log = kMade},
           {.log = L"Server settings INI file copy failed: Source path not found.|Error : 2|"
                   L"Server settings INI validation failed."},
           {.seed = "A=b",
           .obstacle = L"CreateFileW-5",
           .log = L"Server settings INI file copy failed.|Error : 5|Server settings INI validation failed."},
           {.folder = L"",
           .seed = "A=b",
           .obstacle = L"SHGetFolderPathW-0",
           .log = L"Profile settings folder path is empty."},
           {.folder = L"", .seed = "A=b", .obstacle = L"CreateDirectoryW-5", .log = L""},
           {.own = "CHECKUPDATES= faLse ",
           .seed = "CHECKUPDATES=TRUE",
           .checks = false,
           .left = "CHECKUPDATES= faLse "},
           {.own = "CHECKUPDATES=true", .left = "CHECKUPDATES=true"},
           {.own = "CHECKUPDATES=no", .left = "CHECKUPDATES=TRUE"},
           {.own = "CHECKUPDATES=FALSE", .obstacle = L"held-0", .left = "CHECKUPDATES=FALSE"},
           {.folder = L"\\Varnexa\\QRT15\\korsa.ini"}}) {
    CAPTURE(Utf8(std::wstring(row.folder) + L' ' + row.obstacle) + ' ' + (row.own ? row.own : "-"));
    platform::g_nWaitLeftMs = 0;
    Machine machine;
    support::MakeFolder(machine.Documents() + row.folder);
    if (row.own) machine.WriteSettings(row.own + std::string("\r\n"));
    if (row.seed) support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", FileOf(row.seed));
    RunState run;
    std::shared_ptr<void> obstacle = Obstruct(row.obstacle, machine.SettingsFile());
    CHECK(run.PrepareServerSettings() == row.checks);
    obstacle.reset();
    CHECK_LOG(run.LogText(), row.log);
    CHECK_LOG(std::regex_replace(run.NotesText(), std::wregex(L"\n"), L"\n\n"), row.log);
    CHECK(ReadBytes(machine.SettingsFile()) == (row.left ? std::optional(FileOf(row.left)) : std::nullopt));
  }
}

TEST_CASE("a settings folder and file that another start makes at the same moment are used") {
  Machine machine;
  support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", FileOf("CHECKUPDATES=FALSE"));
  const support::ImportHook<CreateDirectoryW> race("CreateDirectoryW", [&](auto path, auto security) {
    if (!std::wstring_view(path).ends_with(L"QRT15\\")) race.original(path, security);
    return race.original(path, security);
  });
  const support::ImportHook<MoveFileExW> file_race("MoveFileExW", [&](auto from, auto to, auto flags) {
    support::WriteBytes(to, FileOf("CHECKUPDATES=FALSE"));
    return file_race.original(from, to, flags);
  });
  RunState run;
  CHECK(!run.PrepareServerSettings());
}

TEST_CASE(
    "each key of the settings file is read, and a default is written only where the error key has none") {
  static constexpr char kDefaultHost[] = "updates.varnexa.example";
  struct Case {
    const char* lines;
    bool was_url = false, url = false;  ///< a complete address: from the last check, from this one
    const char* location = kDefaultHost;
    int timeout = 60000;
    bool ignore = false;
    const char* left = nullptr;  ///< nullptr: as it was
  };
  for (const Case& row : std::vector<Case>{
           {.lines = "A=b", .left = "A=b|IGNORE_PATCH_ERROR=FALSE"},
           {.lines = "IGNORE_PATCH_ERROR=", .was_url = true, .left = "IGNORE_PATCH_ERROR=FALSE"},
           {.lines = "IGNORE_PATCH_ERROR= tRue ", .ignore = true},
           {.lines = "UPDATE_LOC= a.example |IGNORE_PATCH_ERROR=false", .location = "a.example"},
           {.lines = "UPDATE_LOC=a.example|IGNORE_PATCH_ERROR=false",
           .was_url = true,
           .url = true,
           .location = "a.example"},
           {.lines = "UPDATE_LOC_URL=http://b.example/x|UPDATE_LOC=a.example|IGNORE_PATCH_ERROR=false",
           .url = true,
           .location = "http://b.example/x"},
           {.lines = "UPDATE_LOC_URL=\"  \"|UPDATE_LOC=a.example|IGNORE_PATCH_ERROR=false"},
           {.lines = "TIMEOUT=30|IGNORE_PATCH_ERROR=false", .timeout = 30000}}) {
    CAPTURE(row.lines);
    Machine machine;
    machine.WriteSettings("");
    support::WriteBytes(machine.SettingsFile(), FileOf(row.lines));
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CHECK(ReadBytes(machine.SettingsFile()) == FileOf(row.lines));
      UpdateSettings settings;
      bool url_mode = row.was_url;
      settings.ReadUpdateSettings(machine.SettingsFile(), url_mode, write_back);
      CHECK(url_mode == row.url);
      CHECK(Utf8(settings.UpdateLocation) == row.location);
      CHECK(settings.TimeoutMs == row.timeout);
      CHECK(settings.IgnorePatchError == row.ignore);
    }
    CHECK(ReadBytes(machine.SettingsFile()) == FileOf(row.left == nullptr ? row.lines : row.left));
  }
  UpdateSettings settings;
  bool url_mode = true;
  settings.ReadUpdateSettings(L"", url_mode, UpdateSettings::WriteBack::defaults);
  CHECK(Utf8(settings.UpdateLocation) == kDefaultHost);
  CHECK((!url_mode && settings.TimeoutMs == 60000 && !settings.IgnorePatchError));
}

TEST_CASE("a default does not replace a value that could not be read, or only in part") {
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
    CHECK(run.PrepareServerSettings());
    bool url_mode = false;
    UpdateSettings().ReadUpdateSettings(path, url_mode, UpdateSettings::WriteBack::defaults);
    UpdateOptions options;
    options.LoadUpdateOptions(path);
    CHECK(ReadBytes(path) == "[KORSA_URL]\r\n" + lines);
    options.WriteCheckUpdatesKey(true);
    CHECK(ReadBytes(path) == "[KORSA_URL]\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  }
}

TEST_CASE("the page writes the default of an option that the start could not repair") {
  Machine machine;
  machine.WriteSettings("CHECKUPDATES=maybe\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  UpdateOptions().LoadUpdateOptions(machine.SettingsFile());
  CHECK(ReadBytes(machine.SettingsFile()) == FileOf("CHECKUPDATES=TRUE|IGNORE_PATCH_ERROR=TRUE"));
}
