#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <regex>

#include "expected.h"
#include "settings/registered_data.h"
#include "settings/run_state.h"
#include "settings/update_settings.h"
#include "support/machine.h"

using support::Layout;
using support::Machine;
using support::ReadBytes;
using support::Rows;
using support::Split;
using support::Utf8;

namespace {

constexpr Layout kLayouts[] = {Layout::two, Layout::one};

/// "1U DisplayVersion=v": below which key, the name, the text; "#" and its type, "#" and its size in bytes.
void SetValue(const std::wstring& value) {
  const auto parts = Split(value, L'#');
  const std::size_t equals = parts[0].find(L'=');
  std::wstring text = parts[0].substr(equals + 1);
  std::replace(text.begin(), text.end(), L'~', L'\0');
  const auto number = [&](std::size_t i, std::size_t usual) {
    return parts.size() > i ? std::stoul(parts[i]) : usual;
  };
  const Layout layout = kLayouts[value[0] == L'1'];
  support::SetRegistryBytes(value[1] == L'M' ? support::MakerKey(layout) : support::UninstallKey(layout),
                            value.substr(3, equals - 3).c_str(), number(1, REG_SZ),
                            {reinterpret_cast<const char*>(text.c_str()), number(2, text.size() * 2 + 2)});
}

std::string FileOf(const std::wstring& lines) {
  return "[KORSA_URL]\r\n" + std::regex_replace(Utf8(lines), std::regex("\\|"), "\r\n") + "\r\n";
}

}  // namespace

TEST_CASE("registered data: wrong place, text, code or fall-back; text read past its end or refused") {
  for (const auto& row : Rows("integration/registry.txt")) {
    CAPTURE(Utf8(row[0] + L';' + row[1] + L';' + row[2]));
    const Machine machine;
    for (const std::wstring& value : Split(row[2], L',')) SetValue(value);
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
    const auto hook = Obstruct(row[1] == L"5" ? L"RegOpenKeyExW-5" : L"");
    if (row[0] == L"mode") CHECK(data.IdentifyRegistryMode() == (row[4] == L"1"));
    for (const auto& reader : readers) {
      if (row[0] != reader.name) continue;
      (data.*reader.read)();
      CHECK(Utf8(reader.field) == Utf8(row[3]));
    }
    CHECK(run.IconPath == (row[0] == L"two" ? row[3] : L"old"));
    CHECK(run.RegistryModeOne == (row[4] == L"1"));
    CHECK(run.MakerKeyPath == support::MakerKey(kLayouts[row[4] == L"1"]));
    CHECK(run.UninstallKeyPath == support::UninstallKey(kLayouts[row[4] == L"1"]));
    CHECK_LOG(run.LogText(), row[5]);
  }
}

TEST_CASE("settings: the user's file replaced or spoilt; a wrong value or precedence; a program stopped") {
  for (const auto& row : Rows("integration/settings.txt")) {
    CAPTURE(Utf8(row[0] + L';' + row[1] + L';' + row[2] + L';' + row[3]));
    const Machine machine;
    support::MakeFolder(machine.Documents() + row[0]);
    if (row[1] != L"-") support::WriteBytes(machine.SettingsFile(), FileOf(row[1]));
    if (row[2] != L"-") support::WriteBytes(machine.ProgramFolder() + L"\\korsa.ini", FileOf(row[2]));
    RunState run;
    auto hook = Obstruct(row[3], machine.SettingsFile());
    const std::string decision = run.PrepareServerSettings() ? "check " : "";
    hook.reset();
    CHECK_LOG(run.LogText(), row[7]);
    CHECK_LOG(std::regex_replace(run.NotesText(), std::wregex(L"\n"), L"\n\n"), row[7]);
    run.ResolveSettingsFile();
    const auto prepared = ReadBytes(machine.SettingsFile());
    for (const auto write_back : {UpdateSettings::WriteBack::nothing, UpdateSettings::WriteBack::defaults}) {
      CHECK(ReadBytes(machine.SettingsFile()) == prepared);
      UpdateSettings settings;
      bool url_mode = row[4] == L"url";
      settings.ReadUpdateSettings(run.SettingsFilePath, url_mode, write_back);
      CHECK(decision + (url_mode ? "url " : "") + Utf8(settings.UpdateLocation) + " " +
                std::to_string(settings.TimeoutMs) + (settings.IgnorePatchError ? " ignore" : "") ==
            Utf8(row[5]));
    }
    CHECK(ReadBytes(machine.SettingsFile()).value_or(FileOf(L"-")) == FileOf(row[6]));
  }
}
