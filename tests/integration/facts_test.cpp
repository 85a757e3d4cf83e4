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
#include "support/import_hook.h"
#include "support/machine.h"
#include "support/text.h"
#include "ui/update_options.h"

using namespace registered_texts;
using namespace settings_texts;
using support::HeldForAMoment;
using support::ImportHook;
using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Utf8;

namespace {

using Data = RegisteredDataEntries;
using Texts = RegisteredReader;
using Field = std::wstring Data::*;
using TextField = std::wstring_view Texts::*;

/// A function that reads a registered value, its texts, and the field that it fills; null: InstallPath.
struct Reader {
  void (Data::*read)();
  const Texts& texts;
  Field field = nullptr;
};
const Reader kFunctions[] = {
    {.read = &Data::ReadTagOne, .texts = kTagOne, .field = &Data::TagOne},
    {.read = &Data::ReadTagTwo, .texts = kTagTwo, .field = &Data::TagTwo},
    {.read = &Data::ReadTagThree, .texts = kTagThree, .field = &Data::TagThree},
    {.read = &Data::ReadClientVersion, .texts = kClientVersion, .field = &Data::ClientVersion},
    {.read = &Data::ReadInstallPath, .texts = kInstallPath},
    {.read = &Data::ReadInstallPathLogged, .texts = kInstallPathLogged}};

/// What is registered under a key; "refused": no key can be opened.
enum class State { no_key, no_value, empty, too_long, present, refused };
using enum State;

/// The code that follows the text of a reader in the log; 0: none.
unsigned CodeOf(State state) {
  if (state == refused) return 5;
  if (state == too_long) return 234;
  return state == no_key || state == no_value ? 2 : 0;
}

/// A reader's key, in mode one also that of mode two, and what is logged. A text that a reader does not have
/// is not logged, nor is its code.
struct Case {
  State first = no_key, second = present;
  TextField text;
  TextField then = nullptr;  ///< of readers that fall back, in mode one
};
const Case kCases[] = {
    {.first = present, .text = &Texts::completed},
    {.first = empty, .text = &Texts::empty},
    {.first = too_long, .text = &Texts::query_failed},
    {.first = refused, .text = &Texts::open_failed},
    {.first = no_value, .text = &Texts::query_missing, .then = &Texts::alternative_completed},
    {.second = empty, .text = &Texts::open_missing, .then = &Texts::alternative_empty},
    {.second = no_key, .text = &Texts::open_missing, .then = &Texts::alternative_open_failed},
    {.second = no_value, .text = &Texts::open_missing, .then = &Texts::alternative_query_failed}};

void Register(const Texts& reader, Layout layout, State state) {
  const std::wstring key = reader.maker_key ? support::MakerKey(layout) : support::UninstallKey(layout);
  if (state == no_key) return;
  support::SetRegistryText(key, L"Other", L"");
  if (state == no_value) return;
  const std::wstring text(state == empty ? 0 : state == too_long ? 128 : 127, L'v');
  support::SetRegistryText(key, reader.value, text);
}

/// The texts as entries of a log.
std::wstring Entries(const std::vector<std::wstring_view>& texts, const wchar_t* separator = L"\n\n") {
  std::wstring log;
  for (const std::wstring_view text : texts) log.append(text).append(separator);
  return log;
}

std::wstring EntryWithCode(std::wstring_view text, State state) {
  if (text.empty() || CodeOf(state) == 0) return text.empty() ? L"" : Entries({text});
  return Entries({text, L"Error : " + std::to_wstring(CodeOf(state))});
}

/// Lines of a settings file, "|" between them; null: there is no file.
using Lines = const char*;
constexpr Lines kNever = "CHECKUPDATES= faLse ";

std::optional<std::string> FileOf(Lines lines) {
  if (lines == nullptr) return std::nullopt;
  return "[KORSA_URL]\r\n" + std::regex_replace(lines, std::regex("\\|"), "\r\n") + "\r\n";
}

std::wstring SeedOf(const Machine& machine) {
  return machine.ProgramFolder() + L"\\korsa.ini";
}

void RunCase(const Reader& reader, const Case& row, bool mode_one) {
  Machine machine;
  Register(reader.texts, mode_one ? Layout::one : Layout::two, row.first);
  if (mode_one) Register(reader.texts, Layout::two, row.second);
  RunState run;
  run.RegistryModeOne = mode_one;
  run.BuildMakerKeyPath();
  run.BuildUninstallKeyPath();
  Data data(run, run);
  std::wstring& field = reader.field != nullptr ? data.*reader.field : run.InstallPath;
  field = L"old";
  std::optional<ImportHook<RegOpenKeyExW>> refusal;
  if (row.first == refused) refusal.emplace("RegOpenKeyExW", 5, LSTATUS{5});
  (data.*reader.read)();

  std::wstring log = EntryWithCode(reader.texts.*row.text, row.first);
  const bool falls_back = row.then != nullptr && mode_one && reader.texts.falls_back;
  const bool moved = falls_back && CodeOf(row.second) == 0;
  if (falls_back) log += EntryWithCode(reader.texts.*row.then, row.second);
  if (moved) log += Entries({kModeTwo});
  CHECK(Utf8(run.LogText()) == Utf8(log));
  const bool found = row.first == present || (moved && row.second == present);
  CHECK(Utf8(field) == (found ? std::string(127, 'v') : "old"));
  CHECK(run.IconPath == (found && &field == &data.TagTwo ? field : L""));
  const Layout layout = mode_one && !moved ? Layout::one : Layout::two;
  CHECK(run.RegistryModeOne == (layout == Layout::one));
  CHECK(run.MakerKeyPath == support::MakerKey(layout));
  CHECK(run.UninstallKeyPath == support::UninstallKey(layout));
}

}  // namespace

TEST_CASE("registered data: each reader reads its key or the alternative one, and logs the result") {
  for (const Reader& reader : kFunctions) {
    for (const Case& row : kCases) {
      for (const bool mode_one : {true, false}) {
        INFO(Utf8(reader.texts.value), " case ", &row - kCases, mode_one ? " mode one" : " mode two");
        RunCase(reader, row, mode_one);
      }
    }
  }
  Machine machine;
  RunState run;
  run.RegistryModeOne = true;
  const ImportHook<RegOpenKeyExW> refused("RegOpenKeyExW", 5, LSTATUS{5});
  CHECK_FALSE(Data(run, run).IdentifyRegistryMode());
  CHECK(run.LogText() == Entries({kModeFailed, L"Error : 5"}));
}

TEST_CASE("registered data: a value that is stored in another way is read up to its first null") {
  const Machine machine;
  const auto read = [](DWORD type, std::string_view bytes) {
    support::SetRegistryBytes(support::UninstallKey(Layout::two), L"URLUpdateInfo", type, bytes);
    RunState run;
    run.BuildUninstallKeyPath();
    Data data(run, run);
    data.TagThree = L"old";
    data.ReadTagThree();
    return Utf8(data.TagThree);
  };
  using namespace std::string_view_literals;
  CHECK(read(REG_SZ, "a\0b\0c"sv) == "ab");
  CHECK(read(REG_SZ, std::string(256, 'x')) == Utf8(std::wstring(128, 0x7878)));
  CHECK(read(REG_BINARY, "a") == "old");
  CHECK(read(REG_EXPAND_SZ, "%\0T\0%\0\0\0"sv) == "%T%");
  CHECK(read(REG_MULTI_SZ, "a\0\0\0b\0\0\0\0\0"sv) == "a");
}

TEST_CASE("the settings file is prepared from the user's own or the seed, and a failure stops nothing") {
  const std::vector<std::wstring_view> made{kFolderCreated, kCopied}, exists{kFileExists};
  const wchar_t* const folder = L"\\Varnexa\\QRT15";
  const struct {
    const wchar_t* folders = L"";  ///< what is there below Documents
    Lines user = nullptr, seed = nullptr;
    bool lost = false, unwritable = false, held = false, checks = true;
    Lines after = nullptr;
    std::vector<std::wstring_view> log{};
  } rows[] = {
      {.seed = "CHECKUPDATES=TRUE", .after = "CHECKUPDATES=TRUE", .log = made},
      {.folders = L"\\Varnexa", .seed = kNever, .checks = false, .after = kNever, .log = made},
      {.folders = folder, .log = {kSourceNotFound, L"Error : 2", kValidationFailed}},
      {.seed = "A=b", .lost = true, .log = {kFolderPathEmpty}},
      {.seed = "A=b", .unwritable = true},
      {.seed = kNever, .held = true, .log = {kFolderCreated, kCopyFailed, L"Error : 32", kValidationFailed}},
      {.user = kNever, .seed = "CHECKUPDATES=TRUE", .checks = false, .after = kNever, .log = exists},
      {.user = "CHECKUPDATES=true", .after = "CHECKUPDATES=true", .log = exists},
      {.user = "CHECKUPDATES=no", .after = "CHECKUPDATES=TRUE", .log = exists},
      {.user = kNever, .held = true, .after = kNever, .log = exists},
      {.folders = L"\\Varnexa\\QRT15\\korsa.ini", .log = exists},
  };
  for (const auto& row : rows) {
    CAPTURE(&row - rows);
    platform::g_nWaitLeftMs = 0;
    Machine machine;
    support::MakeFolder(machine.Documents() + row.folders);
    if (row.user != nullptr) machine.WriteSettings(std::string(row.user) + "\r\n");
    if (row.seed != nullptr) support::WriteBytes(SeedOf(machine), *FileOf(row.seed));
    std::optional<support::ShareLock> holder;
    if (row.held) holder.emplace(row.user != nullptr ? machine.SettingsFile() : SeedOf(machine));
    std::optional<ImportHook<CreateDirectoryW>> refused_folder;
    if (row.unwritable) refused_folder.emplace("CreateDirectoryW", 5);
    std::optional<ImportHook<SHGetFolderPathW>> no_documents;
    if (row.lost) no_documents.emplace("SHGetFolderPathW", 2u, E_FAIL);
    RunState run;
    CHECK(run.PrepareServerSettings() == row.checks);
    holder.reset();
    CHECK(ReadBytes(machine.SettingsFile()) == FileOf(row.after));
    CHECK(Utf8(run.LogText()) == Utf8(Entries(row.log)));
    CHECK(Utf8(run.NotesText()) == Utf8(Entries(row.log, L"\n")));
  }
}

TEST_CASE("a settings folder and file that another start makes at the same moment are used") {
  Machine machine;
  const std::string seed = *FileOf(kNever);
  support::WriteBytes(SeedOf(machine), seed);
  const ImportHook<CreateDirectoryW> race("CreateDirectoryW", [&](auto path, auto security) {
    if (!std::wstring_view(path).ends_with(L"QRT15\\")) race.original(path, security);
    return race.original(path, security);
  });
  const ImportHook<CreateFileW> file_race("CreateFileW", [&](auto path, auto... all) {
    if (path == machine.SettingsFile() && !ReadBytes(path)) support::WriteBytes(path, seed);
    return file_race.original(path, all...);
  });
  RunState run;
  CHECK(!run.PrepareServerSettings());
}

TEST_CASE("settings files that another process holds for a moment are read all the same") {
  Machine machine;
  platform::g_nWaitLeftMs = platform::kWaitMs;
  support::WriteBytes(SeedOf(machine), *FileOf("CHECKUPDATES=FALSE|UPDATE_LOC=a.example"));
  {
    const HeldForAMoment holder(SeedOf(machine));
    CHECK_FALSE(RunState().PrepareServerSettings());
  }
  const HeldForAMoment holder(machine.SettingsFile());
  UpdateSettings settings;
  bool url_mode = false;
  settings.ReadUpdateSettings(machine.SettingsFile(), url_mode, UpdateSettings::WriteBack::nothing);
  CHECK(settings.UpdateLocation == L"a.example");
}

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
    if (row.settings != nullptr) support::WriteBytes(path, *FileOf(row.settings));
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CHECK(ReadBytes(path) == FileOf(row.settings));
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

TEST_CASE(
    "the page stores an option without a settings file, and writes a default that the start could not") {
  Machine machine;
  machine.WriteSettings("CHECKUPDATES=maybe\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  UpdateOptions options;
  options.LoadUpdateOptions(machine.SettingsFile());
  CHECK(ReadBytes(machine.SettingsFile()) ==
        "[KORSA_URL]\r\nCHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=TRUE\r\n");
  DeleteFileW(machine.SettingsFile().c_str());
  options.WriteCheckUpdatesKey(false);
  CHECK(ReadBytes(machine.SettingsFile()) == "[KORSA_URL]\r\nCHECKUPDATES=FALSE\r\n");
}
