#include <doctest.h>

#include <windows.h>

#include <shlobj.h>

#include <optional>
#include <regex>
#include <vector>

#include "platform/sharing.h"
#include "settings/registered_data.h"
#include "settings/registered_texts.h"
#include "settings/run_state.h"
#include "settings/settings_texts.h"
#include "settings/update_settings.h"
#include "support/machine.h"

using namespace registered_texts;
using namespace settings_texts;
using namespace support;

namespace {

using Data = RegisteredDataEntries;
using Log = std::vector<std::wstring_view>;

/// A function that reads a registered value, and the value.
struct Reader {
  void (Data::*read)();
  const RegisteredReader& value;
};
constexpr Reader kVersion{&Data::ReadClientVersion, kClientVersion}, kOne{&Data::ReadTagOne, kTagOne},
    kThree{&Data::ReadTagThree, kTagThree}, kPath{&Data::ReadInstallPath, kInstallPath},
    kPathLogged{&Data::ReadInstallPathLogged, kInstallPathLogged};
constexpr std::wstring_view kMissing = L"Error : 2";

/// What is registered under a key: text of this length, or less.
enum State { mode_two = -4, refused, no_key, no_value, empty, present = 127, too_long };

void Register(const RegisteredReader& reader, Layout layout, State state) {
  const std::wstring key = reader.maker_key ? MakerKey(layout) : UninstallKey(layout);
  if (state >= no_value) SetRegistryText(key, L"Other", L"");
  if (state < empty) return;
  SetRegistryText(key, reader.value, std::wstring(static_cast<std::size_t>(state), L'v'));
}

/// The texts as entries of a log.
std::wstring Entries(const Log& texts, const wchar_t* separator = L"\n\n") {
  std::wstring log;
  for (const std::wstring_view text : texts) log.append(text).append(separator);
  return log;
}

/// Lines of a settings file, "|" between them; null: there is no file.
using Lines = const char*;
constexpr Lines kNever = "CHECKUPDATES= faLse ";

std::optional<std::string> FileOf(Lines lines) {
  if (lines == nullptr) return std::nullopt;
  return "[KORSA_URL]\r\n" + std::regex_replace(lines, std::regex("\\|"), "\r\n") + "\r\n";
}

}  // namespace

TEST_CASE("registered data: a reader reads its key or the alternative one, and logs the result") {
  const struct {
    Reader reader;
    State one;  ///< below "Wow6432Node"; "refused": no key can be opened; "mode_two": not looked at
    State two;  ///< directly below "SOFTWARE"
    Log log;
    bool found = false;
  } rows[] = {
      {kVersion, present, present, {kClientVersion.completed}, true},
      {kVersion, empty, present, {kClientVersion.empty}},
      {kVersion, too_long, present, {kClientVersion.query_failed, L"Error : 234"}},
      {kVersion, refused, present, {kClientVersion.open_failed, L"Error : 5"}},
      {kVersion,
       no_value,
       present,
       {kClientVersion.query_missing, kMissing, kClientVersion.alternative_completed, kModeTwo},
       true},
      {kVersion, no_key, empty, {kClientVersion.alternative_empty, kModeTwo}},
      {kOne, no_key, no_key, {kTagOne.open_missing, kMissing, kTagOne.alternative_open_failed, kMissing}},
      {kOne,
       no_value,
       no_value,
       {kTagOne.query_missing, kMissing, kTagOne.alternative_query_failed, kMissing}},
      {kOne, mode_two, no_key, {kTagOne.open_missing, kMissing}},
      {kThree, no_value, present, {kTagThree.query_missing, kMissing}},
      {kPath, no_value, present, {}},
      {kPathLogged, no_value, present, {kInstallPathLogged.query_missing, kMissing}},
      {kPathLogged, mode_two, present, {}, true},
  };
  for (const auto& row : rows) {
    CAPTURE(&row - rows);
    Machine machine;
    Register(row.reader.value, Layout::one, row.one);
    Register(row.reader.value, Layout::two, row.two);
    RunState run;
    run.RegistryModeOne = row.one != mode_two;
    run.BuildMakerKeyPath();
    run.BuildUninstallKeyPath();
    Data data(run, run);
    data.TagOne = data.TagThree = data.ClientVersion = run.InstallPath = L"old";
    std::optional<ImportHook<RegOpenKeyExW>> refusal;
    if (row.one == refused) refusal.emplace("RegOpenKeyExW", 5, LSTATUS{5});
    (data.*row.reader.read)();
    CHECK(Utf8(run.LogText()) == Utf8(Entries(row.log)));
    CHECK(UnknownLines(run.LogText()) == 0);
    // One of the values is new, or none.
    const std::wstring values = data.TagOne + data.TagThree + data.ClientVersion + run.InstallPath;
    CHECK(values.size() == (row.found ? 3 * 3 + 127 : 4 * 3));
    const bool falls_back = !row.log.empty() && row.log.back() == kModeTwo;
    const Layout layout = row.one == mode_two || falls_back ? Layout::two : Layout::one;
    CHECK(run.MakerKeyPath == MakerKey(layout));
    CHECK(run.UninstallKeyPath == UninstallKey(layout));
  }
  Machine machine;
  RunState run;
  run.RegistryModeOne = true;
  const ImportHook<RegOpenKeyExW> refusal("RegOpenKeyExW", 5, LSTATUS{5});
  CHECK_FALSE(Data(run, run).IdentifyRegistryMode());
  CHECK(run.LogText() == Entries({kModeFailed, L"Error : 5"}));
  CHECK(UnknownLines(run.LogText()) == 0);
}

TEST_CASE("registered data: a value that is stored in another way is read up to its first null") {
  const Machine machine;
  const auto read = [](DWORD type, std::string_view bytes) {
    SetRegistryBytes(UninstallKey(Layout::two), L"DisplayIcon", type, bytes);
    RunState run;
    run.BuildUninstallKeyPath();
    Data data(run, run);
    data.TagTwo = run.IconPath = L"old";
    data.ReadTagTwo();
    CHECK(data.TagTwo == run.IconPath);
    return Utf8(run.IconPath);
  };
  using namespace std::string_view_literals;
  CHECK(read(REG_SZ, "a\0b\0c"sv) == "ab");
  CHECK(read(REG_SZ, std::string(256, 'x')) == Utf8(std::wstring(128, 0x7878)));
  CHECK(read(REG_BINARY, "a") == "old");
  CHECK(read(REG_EXPAND_SZ, "%\0T\0%\0\0\0"sv) == "%T%");
  CHECK(read(REG_MULTI_SZ, "a\0\0\0b\0\0\0\0\0"sv) == "a");
}

TEST_CASE("the settings file is prepared from the user's own or the seed, and a failure stops nothing") {
  const Log made{kFolderCreated, kCopied}, exists{kFileExists};
  const wchar_t* const folder = L"\\Varnexa\\QRT15";
  const struct {
    const wchar_t* folders = L"";  ///< what is there below Documents
    Lines user = nullptr, seed = nullptr;
    bool lost = false, unwritable = false, held = false, held_for_a_moment = false, checks = true;
    Lines after = nullptr;
    Log log{};
  } rows[] = {
      {.seed = "CHECKUPDATES=TRUE", .after = "CHECKUPDATES=TRUE", .log = made},
      {.folders = L"\\Varnexa", .seed = kNever, .checks = false, .after = kNever, .log = made},
      {.folders = folder, .log = {kSourceNotFound, L"Error : 2", kValidationFailed}},
      {.seed = "A=b", .lost = true, .log = {kFolderPathEmpty}},
      {.seed = "A=b", .unwritable = true},
      {.seed = kNever, .held = true, .log = {kFolderCreated, kCopyFailed, L"Error : 32", kValidationFailed}},
      {.seed = kNever, .held_for_a_moment = true, .checks = false, .after = kNever, .log = made},
      {.user = kNever, .seed = "CHECKUPDATES=TRUE", .checks = false, .after = kNever, .log = exists},
      {.user = "CHECKUPDATES=true", .after = "CHECKUPDATES=true", .log = exists},
      {.user = "CHECKUPDATES=no", .after = "CHECKUPDATES=TRUE", .log = exists},
      {.user = kNever, .held = true, .after = kNever, .log = exists},
      {.folders = L"\\Varnexa\\QRT15\\korsa.ini", .log = exists},
  };
  for (const auto& row : rows) {
    CAPTURE(&row - rows);
    platform::g_nWaitLeftMs = row.held_for_a_moment ? platform::kWaitMs : 0;
    Machine machine;
    MakeFolder(machine.documents + row.folders);
    if (row.user != nullptr) machine.WriteSettings(std::string(row.user) + "\r\n");
    if (row.seed != nullptr) WriteBytes(machine.Seed(), *FileOf(row.seed));
    std::optional<ShareLock> holder;
    if (row.held) holder.emplace(row.user != nullptr ? machine.SettingsFile() : machine.Seed());
    std::optional<HeldForAMoment> momentary;
    if (row.held_for_a_moment) momentary.emplace(machine.Seed());
    std::optional<ImportHook<CreateDirectoryW>> refused_folder;
    if (row.unwritable) refused_folder.emplace("CreateDirectoryW", 5);
    std::optional<ImportHook<SHGetFolderPathW>> no_documents;
    if (row.lost) no_documents.emplace("SHGetFolderPathW", 2u, E_FAIL);
    RunState run;
    CHECK(run.PrepareServerSettings() == row.checks);
    holder.reset();
    CHECK(ReadBytes(machine.SettingsFile()) == FileOf(row.after));
    CHECK(Utf8(run.LogText()) == Utf8(Entries(row.log)));
    CHECK(UnknownLines(run.LogText()) == 0);
    CHECK(Utf8(run.NotesText()) == Utf8(Entries(row.log, L"\n")));
  }
}

TEST_CASE("a settings folder and file that another start makes at the same moment are used") {
  Machine machine;
  WriteBytes(machine.Seed(), *FileOf("CHECKUPDATES=TRUE"));
  const ImportHook<CreateDirectoryW> race("CreateDirectoryW", [&](auto path, auto security) {
    if (!std::wstring_view(path).ends_with(L"QRT15\\")) race.original(path, security);
    return race.original(path, security);
  });
  const ImportHook<CreateFileW> file_race("CreateFileW", [&](auto path, auto... all) {
    if (path == machine.SettingsFile() && !ReadBytes(path)) WriteBytes(path, *FileOf(kNever));
    return file_race.original(path, all...);
  });
  RunState run;
  CHECK(!run.PrepareServerSettings());
}

// The settings file is held for a moment each time.
TEST_CASE(
    "each key of the settings file is read, and a default is written only where the error key has none") {
  const struct {
    Lines settings = nullptr;
    bool url_before = false;  ///< the check before found a complete address
    const wchar_t* location = L"updates.varnexa.example";
    std::int32_t timeout_ms = 60000;
    bool ignore = false, url = false;
    Lines after = settings;
  } rows[] = {
      {.url_before = true},
      {.settings = "A=b", .after = "A=b|IGNORE_PATCH_ERROR=FALSE"},
      {.settings = "IGNORE_PATCH_ERROR=", .url_before = true, .after = "IGNORE_PATCH_ERROR=FALSE"},
      {.settings = "IGNORE_PATCH_ERROR= tRue ", .ignore = true},
      {.settings = "UPDATE_LOC= a.example |IGNORE_PATCH_ERROR=false", .location = L"a.example"},
      {.settings = "UPDATE_LOC=c|IGNORE_PATCH_ERROR=false",
       .url_before = true,
       .location = L"c",
       .url = true},
      {.settings = "UPDATE_LOC_URL=http://b/x|UPDATE_LOC=c|IGNORE_PATCH_ERROR=false",
       .location = L"http://b/x",
       .url = true},
      {.settings = "UPDATE_LOC_URL=\"  \"|UPDATE_LOC=a.example|IGNORE_PATCH_ERROR=false"},
      {.settings = "TIMEOUT=30|IGNORE_PATCH_ERROR=false", .timeout_ms = 30000},
  };
  for (const auto& row : rows) {
    CAPTURE(&row - rows);
    Machine machine;
    machine.WriteSettings("");
    const std::wstring path = row.settings != nullptr ? machine.SettingsFile() : L"";
    if (row.settings != nullptr) WriteBytes(path, *FileOf(row.settings));
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CHECK(ReadBytes(path) == FileOf(row.settings));
      platform::g_nWaitLeftMs = platform::kWaitMs;
      std::optional<HeldForAMoment> holder;
      if (!path.empty()) holder.emplace(path);
      UpdateSettings settings;
      bool url_mode = row.url_before;
      settings.ReadUpdateSettings(path, url_mode, write_back);
      CHECK(Utf8(settings.UpdateLocation) == Utf8(row.location));
      CHECK(settings.TimeoutMs == row.timeout_ms);
      CHECK(settings.IgnorePatchError == row.ignore);
      CHECK(url_mode == row.url);
    }
    CHECK(ReadBytes(path) == FileOf(row.after));
  }
}
