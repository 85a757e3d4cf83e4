#include <doctest.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <optional>
#include <random>
#include <regex>
#include <thread>

#include "acceptance/driver.h"
#include "platform/sharing.h"

using namespace support;

namespace {

constexpr char kHost[] = "[KORSA_URL]\r\nUPDATE_LOC=updates.varnexa.example\r\nTIMEOUT=20\r\n";

/// The number in an environment variable, or the usual one.
unsigned Number(const char* variable, unsigned usual) {
  const char* const number = std::getenv(variable);
  return number == nullptr ? usual : static_cast<unsigned>(std::strtoul(number, nullptr, 10));
}

/// The log file without its lines with a time.
std::string LogOf(const InstalledMachine& machine) {
  return std::regex_replace(machine.Log(), std::regex("Varnexa 15.0 Tavrel Utility Date/Time[^\n]*\n"), "");
}

std::string Repeat(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

}  // namespace

TEST_CASE("each of ten utilities at once ends, sees the whole list and writes its whole log") {
  // The list is long, and its pack is the installed one: a utility that reads a part of it logs another
  // result. Without a list no utility waits for the list's mutex, so that all reach the log file at once.
  const std::string list =
      "[Update Packs for Versions]\r\n" + Repeat("key=value\r\n", 20000) + "[Varnexa15_0_2_5]\r\n";
  constexpr int kRounds = 6, kTogether = 10;
  for (const int status : {200, 404}) {
    const HttpServer server(Reply(status, list));
    InstalledMachine machine;
    machine.WriteSettings("IGNORE_PATCH_ERROR=TRUE\r\nTIMEOUT=20\r\n");
    CHECK(Run(machine.program, L"2").End() == "exit code 0");
    const std::string alone = LogOf(machine);
    CHECK(alone.find(status == 200 ? "matching with existing information" : " Error : 404") != alone.npos);
    for (int round = 0; round < kRounds; ++round) {
      // In every second round none gets the mutex, so all wait for it and then reach the log together.
      platform::NamedMutex mutex(L"Local\\QRT_15_TavrelUtility_UpdatesFile");
      if (round % 2 == 1) mutex.Take();
      std::deque<Run> runs;
      while (runs.size() < kTogether) runs.emplace_back(machine.program, L"2");
      for (const Run& run : runs) CHECK(run.End() == "exit code 0");
    }
    CHECK(LogOf(machine) == Repeat(alone, 1 + kRounds * kTogether));
  }
}

// Before the kills, after which Wine sometimes cannot show a window.
TEST_CASE(
    "a tick is stored in a file that is held for a moment, also after the start has used up its waits") {
  const HttpServer server(Reply(404, ""));
  InstalledMachine machine;
  std::optional<ShareLock> holder(std::in_place, machine.SettingsFile());
  const Run run(machine.program);
  REQUIRE(WaitUntil([&] { return IsWindowEnabled(run.Control(IDC_RETRY)) != FALSE; }));
  std::jthread release([&] { Sleep(300), holder.reset(); });
  Ask(run.Control(IDC_CHECK_ON_STARTUP), BM_CLICK);
  CHECK(ReadBytes(machine.SettingsFile()) ==
        "[KORSA_URL]\r\nCHECKUPDATES=FALSE\r\nIGNORE_PATCH_ERROR=FALSE\r\n");
}

TEST_CASE("a utility killed at any moment leaves settings and record whole, and the next one works") {
  const HttpServer server(Reply(200, kOnePack));
  InstalledMachine machine;
  const std::string record = "Varnexa15_0_2_7";
  const std::string settings = std::string(kHost) + "CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n";
  WriteBytes(machine.Seed(), kHost);
  // The seed selects the moments of the kills.
  std::mt19937 random(Number("TAVREL_STRESS_SEED", 20250307));
  const unsigned kills = Number("TAVREL_STRESS_KILLS", 100);
  for (unsigned i = 0; i < kills; ++i) {
    // Without settings, or with settings that lack both defaults; the record is ahead of the executable.
    DeleteFileW(machine.SettingsFile().c_str());
    if (i % 2 == 0) WriteBytes(machine.SettingsFile(), kHost);
    WriteBytes(machine.Record(), record);
    {
      const Run run(machine.program, i % 3 == 0 ? L"" : L"2");
      Sleep(random() % 300);
    }
    CAPTURE(i);
    const std::wstring folder = std::filesystem::path(machine.SettingsFile()).parent_path().wstring();
    CHECK(FileNames(folder).size() == (ReadBytes(machine.SettingsFile()) ? 1 : 0));
    const std::string left = ReadBytes(machine.SettingsFile()).value_or(kHost);
    // A new file is empty between its creation and the one write.
    const bool made = left.empty() && i % 2 == 1;
    const bool whole = made || (left.starts_with(kHost) && settings.starts_with(left));
    CHECK_MESSAGE(whole, left);
    CHECK(ReadBytes(machine.Record()).value_or(record) == record);
  }
  machine.PlaceExecutable(L"15.0.2.7");
  WriteBytes(machine.SettingsFile(), kHost);
  CHECK(Run(machine.program, L"2").End() == "exit code 0");
  CHECK(ReadBytes(machine.SettingsFile()) == settings);
  CHECK(machine.Log().ends_with("Check Product Updates Availability : End ============\r\n"));
}
