#include <doctest.h>

#include "expected.h"
#include "settings/registered_data.h"
#include "settings/run_state.h"
#include "support/machine.h"

using support::Layout;
using support::Machine;
using support::Split;

namespace {

using Hook = std::shared_ptr<void>;

Layout LayoutOf(bool mode_one) {
  return mode_one ? Layout::one : Layout::two;
}

/// A row: which reader; the mode, 1 or 2, or "5", mode 1 with every open refused by that code; the values
/// that are there (below "1" or "2", "M"aker or "U"ninstall key, name and text; "long" stands for 128
/// characters); the field's text afterwards; the mode afterwards; the log.
constexpr wchar_t kReaders[] =
    LR"(
one;1;1U DisplayVersion=v;v;1;@Reading tag one completed.;
one;2;2U DisplayVersion=v;v;2;@Reading tag one completed.;
one;1;1U DisplayVersion=,2U DisplayVersion=v;old;1;@Reading tag one query failed. Value not found.;
one;1;1U Other=,2U DisplayVersion=v;v;2;@Reading tag one query failed.|Error : 2|@Reading alternative tag one path completed.|MODE TWO;
one;1;2U DisplayVersion=;old;2;@Reading tag one failed to open.|Error : 2|@Reading alternative tag one path query failed. Value not found.|MODE TWO;
one;1;2U Other=;old;1;@Reading tag one failed to open.|Error : 2|@Reading alternative tag one path query failed.|Error : 2;
one;1;;old;1;@Reading tag one failed to open.|Error : 2|@Reading alternative tag one path failed to open.|Error : 2;
one;2;2U Other=;old;2;@Reading tag one query failed.|Error : 2;
one;1;1U DisplayVersion=long,2U DisplayVersion=v;old;1;@Reading tag one query failed. |Error : 234;
one;5;2U DisplayVersion=v;old;1;@Reading tag one failed to open.|Error : 5;
two;1;1U DisplayIcon=v;v;1;@Reading tag two completed.;
two;1;1U DisplayIcon=;old;1;@Reading tag two query failed. Value not found.;
two;1;1U Other=,2U DisplayIcon=v;old;1;@Reading tag two query failed. |Error : 2;
two;2;;old;2;@Reading tag two  failed to open.|Error : 2;
three;2;2U URLUpdateInfo=v;v;2;@Reading tag three completed.;
three;1;1U URLUpdateInfo=;old;1;@Reading tag three query failed. Value not found. ;
three;1;1U Other=,2U URLUpdateInfo=v;old;1;@Reading tag three query failed.|Error : 2;
three;1;;old;1;@Reading tag three failed to open.|Error : 2;
path;1;1M Installpath=v;v;1;;
path;1;1M Installpath=,2M Installpath=v;old;1;;
path;2;;old;2;;
logged path;2;2M Installpath=v;v;2;;
logged path;1;1M Installpath=;old;1;Client side update check, level two failed. Value not found.;
logged path;1;1M Other=;old;1;Client side update check, level two failed.|Error : 2;
logged path;1;;old;1;Client side update check, level two (L1) failed|Error : 2;
version;1;1M Version=v;v;1;@version information validated.;
version;1;1M Version=;old;1;@version information failed. Value not found. ;
version;1;1M Version=long,2M Version=v;old;1;@version information query failed|Error : 234;
version;2;2M Other=;old;2;Client side update check, level version (L1) failed|Error : 2;
version;5;2M Version=v;old;1;@version information failed to open.|Error : 5;
version;1;;old;1;Client side update check, level version add-on failed.|Error : 2;
version;1;2M Other=;old;1;@alternative version path query failed.|Error : 2;
version;1;2M Version=v;v;2;@alternative version path details found.|MODE TWO;
version;1;2M Version=;old;2;@alternative version path query failed. Value not found.|MODE TWO;
)";

void SetValues(const std::wstring& values) {
  for (const std::wstring& value : Split(values, L',')) {
    if (value.empty()) continue;
    const Layout layout = LayoutOf(value[0] == L'1');
    const std::size_t equals = value.find(L'=');
    const std::wstring text = value.substr(equals + 1);
    support::SetRegistryText(value[1] == L'M' ? support::MakerKey(layout) : support::UninstallKey(layout),
                             value.substr(3, equals - 3).c_str(),
                             text == L"long" ? std::wstring(128, L'x') : text);
  }
}

}  // namespace

TEST_CASE("registered data: wrong place, text, code or fall-back of a reader") {
  for (const std::wstring& row : Split(kReaders, L'\n')) {
    if (row.empty()) continue;
    CAPTURE(support::Utf8(row));
    const auto columns = Split(row, L';');
    const Machine machine;
    SetValues(columns[2]);
    RunState run;
    run.RegistryModeOne = columns[1] != L"2";
    run.BuildMakerKeyPath();
    run.BuildUninstallKeyPath();
    run.InstallPath = run.IconPath = L"old";
    RegisteredData data(run, run);
    data.TagOne = data.TagTwo = data.TagThree = data.ClientVersion = L"old";
    const struct {
      const wchar_t* name;
      void (RegisteredData::*read)();
      std::wstring& field;
    } readers[] = {{L"one", &RegisteredData::ReadTagOne, data.TagOne},
                   {L"two", &RegisteredData::ReadTagTwo, data.TagTwo},
                   {L"three", &RegisteredData::ReadTagThree, data.TagThree},
                   {L"path", &RegisteredData::ReadInstallPath, run.InstallPath},
                   {L"logged path", &RegisteredData::ReadInstallPathLogged, run.InstallPath},
                   {L"version", &RegisteredData::ReadClientVersion, data.ClientVersion}};
    const Hook hook = columns[1] == L"5" ? Refuse(L"RegOpenKeyExW-5") : Hook();
    if (columns[0] == L"mode") CHECK(data.IdentifyRegistryMode() == (columns[4] == L"1"));
    for (const auto& reader : readers) {
      if (columns[0] != reader.name) continue;
      (data.*reader.read)();
      CHECK(reader.field == columns[3]);
    }
    CHECK(run.IconPath == (columns[0] == L"two" ? columns[3] : L"old"));
    CHECK(run.RegistryModeOne == (columns[4] == L"1"));
    CHECK(run.MakerKeyPath == support::MakerKey(LayoutOf(columns[4] == L"1")));
    CHECK(run.UninstallKeyPath == support::UninstallKey(LayoutOf(columns[4] == L"1")));
    CHECK_LOG(run.LogText(), columns[5]);
  }
}

TEST_CASE("registry values: text read past what is stored, or a whole one refused") {
  const std::wstring full(127, L'x');
  const struct {
    DWORD type;
    std::wstring stored;
    std::size_t bytes;
    std::wstring text;
  } cases[] = {
      {REG_SZ, L"abc", 6, L"abc"},
      {REG_SZ, L"abcd", 7, L"abc"},
      {REG_SZ, full + L'\0', 256, full},
      {REG_SZ, full + L'y', 256, full + L'y'},
      {REG_BINARY, full + L'y', 256, full + L'y'},
      {REG_BINARY, L"a", 1, L"old"},
      {REG_BINARY, L"", 0, L"old"},
      {REG_EXPAND_SZ, L"%TMP%", 12, L"%TMP%"},
      {REG_MULTI_SZ, std::wstring(L"first\0second\0", 14), 28, L"first"},
      {REG_DWORD, L"AB", 4, L"AB"},
      {REG_NONE, L"none", 8, L"none"},
  };
  for (const auto& c : cases) {
    CAPTURE(c.type);
    CAPTURE(c.bytes);
    const Machine machine;
    support::SetRegistryBytes(support::UninstallKey(Layout::two), L"URLUpdateInfo", c.type,
                              {reinterpret_cast<const char*>(c.stored.data()), c.bytes});
    RunState run;
    run.BuildUninstallKeyPath();
    RegisteredData data(run, run);
    data.TagThree = L"old";
    data.ReadTagThree();
    CHECK(support::Utf8(data.TagThree) == support::Utf8(c.text));
  }
}

TEST_CASE("product executable: version misread, or a missing one wipes what is known") {
  Machine machine;
  RunState run;
  run.WriteRunHeader();
  RegisteredData data(run, run);
  run.InstallPath = machine.ProductFolder();
  const auto read = [&] {
    data.ReadProductFileVersion();
    data.ReadProductVersionNumber();
    return support::Utf8(data.ProductFileVersion + L" " + data.ProductVersionThird + L" " +
                         data.ProductVersionFourth + L" " + std::to_wstring(data.ProductVersionNumber));
  };
  CHECK(read() == "   0");
  machine.PlaceExecutable(L"15.0.0.36");
  CHECK(read() == "15.0.0.36 0 36 15036");
  run.InstallPath += L'\\';
  machine.PlaceExecutable(L"15.0.2.7");
  CHECK(read() == "15.0.2.7 2 7 15027");
  support::WriteBytes(machine.ProductFolder() + L"\\Qrt.exe", "no program");
  CHECK(read() == "15.0.2.7 2 7 15027");
  std::wstring log = run.LogText();
  run.ApplyBuildVersionToLog(data.ProductFileVersion);
  CHECK(run.LogText() == log.replace(log.find(L"NA\n"), 2, L"15.0.2.7"));
  CHECK(run.BuildLine() == L"Varnexa 15.0 Build Version : NA");
}
