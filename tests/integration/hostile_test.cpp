#include <doctest.h>

#include <windows.h>

#include <psapi.h>

#include <filesystem>

#include "log/system_log.h"
#include "settings/run_state.h"
#include "support/http_server.h"
#include "support/text.h"
#include "sweep.h"
#include "text/text.h"
#include "update/check_patch.h"
#include "update/process_state.h"

namespace {

using support::Machine;

SIZE_T PeakMegabytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PeakPagefileUsage >> 20;
}

/// A whole run: what start-up decided, the check's flags, number of names and error text, its last word, and
/// whether the log file has it all.
std::string Play() {
  RunState run;
  const bool check_updates = run.PrepareServerSettings();
  run.ResolveSettingsFile();
  g_nUpdateCheckCount = 1;
  const CCheckPatch check(run);
  SystemLog log;
  log.AppendText(run.LogText());
  log.OpenSystemLog();
  const std::size_t end = run.LogText().rfind(L"\n\n=====");
  return std::string(check_updates ? "checks " : "") + (check.m_bCheckFailed ? "failed " : "") +
         (check.m_bNetworkError ? "network " : "") + (check.m_bUpdatesAvailable ? "updates " : "") +
         std::to_string(check.UpdateSections.size()) + support::Utf8(check.m_strErrorText) + " ..." +
         support::Utf8(run.LogText().substr(end - 2, 2)) + (log.PendingText().empty() ? "" : " unlogged");
}

/// The low bytes of the characters.
std::string Low(const std::wstring& text) {
  return {text.begin(), text.end()};
}

/// The bytes that a table's text stands for: the low bytes of its characters.
std::string Bytes(std::wstring text) {
  text::ReplaceAll(text, L"|", L"\r\n");
  std::string bytes;
  for (const std::wstring& part : support::Split(text, L'<')) {
    // What is repeated ends at '>'.
    const std::size_t star = part.find(L'*'), end = part.find(L'>');
    if (end != part.npos) {
      const std::wstring count = part.substr(0, star);
      std::string unit = Low(part.substr(star + 1, end - star - 1));
      for (std::size_t i = unit.size(); count == L"wide" && i != 0; --i) unit.insert(i, 1, '\0');
      for (int left = count == L"wide" ? 1 : std::stoi(count); left != 0; --left) bytes += unit;
    }
    bytes += Low(part.substr(end == part.npos ? 0 : end + 1));
  }
  return bytes;
}

/// Does what a row asks for below `root`; what must last lasts as long as what is returned.
std::shared_ptr<void> Disturb(const std::wstring& root, const std::vector<std::wstring>& row) {
  const std::wstring& deed = row[2];
  std::wstring path = root + row[3];
  std::wstring value = row[4];
  text::ReplaceAll(value, L"@", root);
  if (deed == L"clock") return sweep::StopClock(std::stoll(value));
  if (deed == L"value") support::SetRegistryText(row[3], row[5].c_str(), value);
  if (deed == L"Documents") {
    if (!value.empty()) path.resize(std::stoul(value), L'd');
    support::MakeFolder(path);
    RegSetKeyValueW(HKEY_CURRENT_USER,
                    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                    L"Personal", REG_SZ, path.c_str(), static_cast<DWORD>(path.size() * 2 + 2));
  }
  for (int i = 0; deed == L"logs" && i < 2000; ++i)
    support::WriteBytes(path + std::to_wstring(i) + L".log", "");
  if (deed == L"file" || deed == L"folder" || deed == L"none") support::RemoveTree(path);
  if (deed == L"folder") support::MakeFolder(path);
  if (deed == L"file" || deed == L"held" || deed == L"read-only") support::WriteBytes(path, Bytes(row[4]));
  if (deed == L"read-only") SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
  if (deed == L"held") return std::make_shared<support::ShareLock>(path);
  return nullptr;
}

}  // namespace

TEST_CASE("an answer makes the check crash, hang, eat memory or report what was not sent") {
  for (const auto& row : support::Rows("integration/hostile_answers.txt")) {
    CAPTURE(support::Utf8(row[0]));
    Machine machine;
    sweep::Furnish(machine);
    const auto end = row[5] == L"reset" ? support::HttpReply::End::reset : support::HttpReply::End::close;
    const support::HttpReply reply{Bytes(row[6]), row[2] != L"0",     std::stoul(row[2]),
                                   Bytes(row[7]), std::stoul(row[4]), end};
    unsigned left = std::stoul(row[3]);
    const support::HttpServer server(
        [&](const auto&) { return left-- != 0 ? reply : support::Reply(200, sweep::kServedList); });
    CHECK(Play() == support::Utf8(row[1]));
    CHECK(PeakMegabytes() <= 64);
  }
}

TEST_CASE("a machine in disorder stops the check, or the check damages what it finds") {
  const support::HttpServer server(support::Reply(200, sweep::kServedList));
  for (const auto& row : support::Rows("integration/hostile_machines.txt")) {
    CAPTURE(support::Utf8(row[0]));
    Machine machine;
    sweep::Furnish(machine);
    const std::wstring root = std::filesystem::path(machine.Documents()).parent_path().wstring();
    const auto lasting = Disturb(root, row);
    const auto settings = support::ReadBytes(machine.SettingsFile());
    CHECK(Play() == support::Utf8(row[1]));
    CHECK(support::ReadBytes(machine.SettingsFile()) == settings);
  }
}
