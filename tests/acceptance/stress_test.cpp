#include <doctest.h>

#include <memory>
#include <random>

#include "acceptance/driver.h"
#include "platform/folders.h"
#include "support/text.h"
#include "support/watchdog.h"

using support::HttpServer;
using support::ReadBytes;
using support::Reply;
using support::WriteBytes;

namespace {

constexpr char kDefaults[] = "CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n";
constexpr char kHost[] = "[KORSA_URL]\r\nUPDATE_LOC=updates.varnexa.example\r\nTIMEOUT=20\r\n";

/// The log file without the lines that the clock writes.
std::string LogBut(const Stage& stage) {
  std::string log = ReadBytes(stage.LogFile()).value_or("");
  for (std::size_t start = 0;
       (start = log.find("Varnexa 15.0 Tavrel Utility Date/Time", start)) != std::string::npos;) {
    log.erase(start, log.find('\n', start) + 1 - start);
  }
  return log;
}

std::string Repeat(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

}  // namespace

TEST_CASE("ten utilities at once: one hangs, reports another list, cuts an entry in two or loses a file") {
  support::AllowSeconds(120);
  // A list that takes a while to read, and whose pack is the installed one: whoever sees less says so.
  const std::string list =
      "[Update Packs for Versions]\r\n" + Repeat("key=value\r\n", 20000) + "[Varnexa15_0_2_5]\r\n";
  int status = 0;
  const HttpServer server([&](const support::HttpRequest&) { return Reply(status, list); });
  constexpr int kRounds = 5, kTogether = 10;
  // Whoever gets no list does not wait for another's turn at it: all reach the log file at once.
  for (const std::string result : {"matching with existing information", " Error : 404"}) {
    status = result.ends_with("404") ? 404 : 200;
    const Stage stage;
    stage.WriteSettings("IGNORE_PATCH_ERROR=TRUE\r\nTIMEOUT=20\r\n");
    CHECK(Run(stage.program, L"2").Ended());
    const std::string alone = LogBut(stage);
    CHECK(alone.find(result) != std::string::npos);
    for (int round = 0; round < kRounds; ++round) {
      std::vector<std::unique_ptr<Run>> runs;
      for (int i = 0; i < kTogether; ++i) runs.push_back(std::make_unique<Run>(stage.program, L"2"));
      for (const auto& run : runs) CHECK(run->Ended());
    }
    CHECK(LogBut(stage) == Repeat(alone, 1 + kRounds * kTogether));
    CHECK(stage.Setting(L"TIMEOUT") == "20");
  }
}

TEST_CASE("killed at any moment: settings or record are damaged, or the next run does not work") {
  support::AllowSeconds(120);
  const HttpServer server(Reply(200, kOnePack));
  const Stage stage;
  const std::wstring settings = platform::DocumentsFolder() + L"\\Varnexa\\QRT15\\korsa.ini";
  const std::wstring record = stage.folder + L"\\product\\installedupdates.dat";
  WriteBytes(stage.folder + L"\\program\\korsa.ini", kHost);
  std::mt19937 random(20250307);
  for (int i = 0; i < 100; ++i) {
    // Seeded afresh, or with both defaults to be written back; the record is ahead of the executable.
    DeleteFileW(settings.c_str());
    if (i % 2 == 0) WriteBytes(settings, kHost);
    WriteBytes(record, "Varnexa15_0_2_7");
    {
      const Run run(stage.program, i % 3 == 0 ? L"" : L"2");
      Sleep(random() % 300);
    }
    CAPTURE(i);
    const std::string left = ReadBytes(settings).value_or(kHost);
    const bool whole = left.starts_with(kHost) && (std::string(kHost) + kDefaults).starts_with(left);
    CHECK_MESSAGE(whole, left);
    CHECK(ReadBytes(record).value_or("Varnexa15_0_2_7") == "Varnexa15_0_2_7");
  }
  stage.PlaceProduct(L"15.0.2.7");
  CHECK(Run(stage.program, L"2").Ended());
  CHECK(stage.Setting(L"UPDATE_LOC") == "updates.varnexa.example");
  CHECK(LogBut(stage).ends_with("Check Product Updates Availability : End ============\r\n"));
}
