#include <doctest.h>

#include "expected.h"
#include "settings/run_state.h"
#include "settings/update_settings.h"
#include "support/machine.h"

using support::Machine;

namespace {

constexpr wchar_t kDefaultHost[] = L"updates.varnexa.example";

/// A row: the folder that is there; the line in the user's own file and in the seed beside the program ("-":
/// no such file); what is refused; what is decided; the line in the user's file afterwards; the log.
constexpr wchar_t kPreparations[] =
    LR"(
;-;CHECKUPDATES=TRUE;;1;CHECKUPDATES=TRUE;Profile settings directory created.|Server settings INI file copied.
\Varnexa;-;CHECKUPDATES=FALSE;;0;CHECKUPDATES=FALSE;Profile settings directory created.|Server settings INI file copied.
\Varnexa\QRT15;-;-;;1;-;Server settings INI file copy failed: Source path not found.|Error : 2|Server settings INI validation failed.
\Varnexa\QRT15;-;A=b;CopyFileW-5;1;-;Server settings INI file copy failed.|Error : 5|Server settings INI validation failed.
;-;A=b;SHGetFolderPathW-0;1;-;Profile settings folder path is empty.
;-;A=b;CreateDirectoryW-5;1;-;
\Varnexa\QRT15;CHECKUPDATES= faLse ;CHECKUPDATES=TRUE;;0;CHECKUPDATES= faLse ;Server settings INI file already exists.
\Varnexa\QRT15;CHECKUPDATES=true;-;;1;CHECKUPDATES=true;Server settings INI file already exists.
\Varnexa\QRT15;CHECKUPDATES=no;-;;1;CHECKUPDATES=TRUE;Server settings INI file already exists.
\Varnexa\QRT15;CHECKUPDATES=;-;;1;CHECKUPDATES=TRUE;Server settings INI file already exists.
\Varnexa\QRT15;CHECKUPDATES=FALSEHOOD;-;;1;CHECKUPDATES=TRUE;Server settings INI file already exists.
)";

std::string FileOf(const std::wstring& line) {
  return "[KORSA_URL]\r\n" + support::Utf8(line) + "\r\n";
}

}  // namespace

TEST_CASE("settings preparation: a slip replaces the user's file, or stops the program for want of one") {
  for (const std::wstring& row : support::Split(kPreparations, L'\n')) {
    if (row.empty()) continue;
    CAPTURE(support::Utf8(row));
    const auto columns = support::Split(row, L';');
    const Machine machine;
    support::MakeFolder(machine.Documents() + columns[0]);
    if (columns[1] != L"-") support::WriteBytes(machine.SettingsFile(), FileOf(columns[1]));
    if (columns[2] != L"-") support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", FileOf(columns[2]));
    RunState run;
    const auto hook = columns[3].empty() ? nullptr : Refuse(columns[3]);
    CHECK(run.PrepareServerSettings() == (columns[4] == L"1"));
    CHECK_LOG(run.LogText(), columns[6]);
    std::wstring notes;
    for (const std::wstring& entry : expected::Log(columns[6])) notes += entry + L"\n";
    CHECK(run.NotesText() == notes);
    CHECK(support::ReadBytes(machine.SettingsFile()).value_or(FileOf(L"-")) == FileOf(columns[5]));
  }
}

TEST_CASE("settings reading: wrong precedence, time-out or write-back") {
  const struct {
    std::string lines;  // a valid IGNORE_PATCH_ERROR follows unless they name it
    bool mode_before;
    const wchar_t* location;
    bool mode;
    std::int32_t timeout = 60000;
    bool ignore = false, written = false;
  } cases[] = {
      {"IGNORE_PATCH_ERROR=\r\n", true, kDefaultHost, false, 60000, false, true},
      {"IGNORE_PATCH_ERROR=yes\r\n", false, kDefaultHost, false, 60000, false, true},
      {"IGNORE_PATCH_ERROR= tRue \r\n", false, kDefaultHost, false, 60000, true},
      {"UPDATE_LOC= a.example \r\n", false, L"a.example", false},
      {"UPDATE_LOC=a.example\r\n", true, L"a.example", true},
      {"UPDATE_LOC_URL=http://b.example/x\r\nUPDATE_LOC=a.example\r\n", false, L"http://b.example/x", true},
      {"UPDATE_LOC_URL=\"  \"\r\nUPDATE_LOC=a.example\r\n", false, kDefaultHost, false},
      {"TIMEOUT=30\r\n", false, kDefaultHost, false, 30000},
      {"TIMEOUT=2.5\r\n", false, kDefaultHost, false, 2000},
      {"TIMEOUT=-1\r\n", false, kDefaultHost, false, -1000},
      {"TIMEOUT=soon\r\n", false, kDefaultHost, false, 0},
      {"TIMEOUT=99999999999\r\n", false, kDefaultHost, false, 2147483647},
  };
  for (const auto& c : cases) {
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CAPTURE(c.lines);
      Machine machine;
      machine.WriteSettings(c.lines + (c.lines[0] == 'I' ? "" : "IGNORE_PATCH_ERROR=false\r\n"));
      const auto before = support::ReadBytes(machine.SettingsFile());
      UpdateSettings settings;
      bool mode = c.mode_before;
      settings.ReadUpdateSettings(machine.SettingsFile(), mode, write_back);
      CHECK(settings.UpdateLocation == c.location);
      CHECK(mode == c.mode);
      CHECK(settings.IgnorePatchError == c.ignore);
      CHECK(settings.TimeoutMs == c.timeout);
      const auto after = support::ReadBytes(machine.SettingsFile());
      const bool written = c.written && write_back == UpdateSettings::WriteBack::defaults;
      CHECK((after == before) != written);
      if (written) CHECK(after->find("IGNORE_PATCH_ERROR=FALSE\r\n") != std::string::npos);
    }
  }
}

TEST_CASE("settings file: taken for granted without its folder") {
  const Machine machine;
  RunState run;
  run.ResolveSettingsFile();
  CHECK(run.SettingsFilePath.empty());
  run.UpdateLocUrlMode = true;
  UpdateSettings settings;
  settings.ReadUpdateSettings({}, run.UpdateLocUrlMode, UpdateSettings::WriteBack::defaults);
  CHECK(settings.UpdateLocation == kDefaultHost);
  CHECK_FALSE((settings.IgnorePatchError || run.UpdateLocUrlMode));
  CHECK(settings.TimeoutMs == 60000);
  support::MakeFolder(machine.Documents() + L"\\Varnexa\\QRT15");
  run.ResolveSettingsFile();
  CHECK(run.SettingsFilePath == machine.SettingsFile());
}
