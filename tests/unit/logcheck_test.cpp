#include <doctest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "log/log_texts.h"
#include "logcheck/log_reader.h"
#include "logcheck/texts.h"
#include "logcheck/verdict.h"
#include "settings/registered_texts.h"
#include "settings/settings_texts.h"
#include "support/table.h"
#include "text/text.h"
#include "ui/ui_texts.h"
#include "update/update_texts.h"

namespace {

using namespace update_texts;
using namespace registered_texts;
using View = std::wstring_view;
using Lines = std::initializer_list<View>;

const std::string kHeader =
    "====================================================\n"
    "Varnexa 15.0 Tavrel Utility File Version : 2.0.3.0\n"
    "Varnexa 15.0 Tavrel Utility Date/Time : Saturday 22:30, November 21, 2026\n"
    "Varnexa 15.0 Build Version : 15.0.2.5\n"
    "====================================================\n"
    "App  Mode: User, User Mode: NA, Invoke Mode: Patch verfication.\n";

std::string Join(Lines lines) {
  std::string log;
  for (const View line : lines) log += Bytes(line) + "\r\n";
  return log;
}

/// The runs of a log that arrives in blocks of `block` bytes.
std::vector<logcheck::Run> RunsOf(std::string_view log, std::size_t block = 4096) {
  std::vector<logcheck::Run> runs;
  logcheck::LogReader reader([&](logcheck::Run& run) {
    Judge(run);
    runs.push_back(run);
  });
  for (; !log.empty(); log.remove_prefix(std::min(block, log.size()))) reader.Read(log.substr(0, block));
  reader.End();
  return runs;
}

/// Each run: what its header says, the outcomes of its checks, and the lines that are unknown.
std::string Shown(const std::vector<logcheck::Run>& runs) {
  std::string result;
  for (const logcheck::Run& run : runs) {
    const char* rights = !run.administrator ? " ?]" : *run.administrator ? " admin]" : " user]";
    result +=
        "[" + run.time.value_or("") + " " + run.mode.value_or("?") + " " + run.utility.value_or("") + " ";
    result += run.product.value_or("") + rights;
    for (const logcheck::Check& check : run.checks) result.append(" ").append(NameOf(check.outcome));
    for (const std::string& line : run.unknown) result += " <" + line + ">";
  }
  return result;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != text.npos;
}

/// The check of a log of these entries must have this outcome, exit code and error, and step, and this part
/// of its advice or of its last note.
void CheckJudged(Lines entries, const std::string& outcome, View step, std::string_view part,
                 bool version_read = true) {
  const std::string log = (version_read ? kHeader : "Varnexa 15.0 Build Version : NA\n") + Join(entries);
  INFO(log);
  const std::vector<logcheck::Run> runs = RunsOf(log + Bytes(kUpdatesEnd));
  REQUIRE(runs.size() == 1);
  CHECK(runs[0].unknown_lines == 0);
  const logcheck::Check& check = runs[0].LastCheck();
  CHECK(std::string(NameOf(check.outcome)) + " " + std::to_string(check.exit_code.value_or(0)) + " " +
            check.error.value_or("") ==
        outcome);
  CHECK(check.step.value_or("") == Bytes(text::Trim(step)));
  const std::string advice = check.advice + (check.notes.empty() ? "" : " | " + check.notes.back());
  CHECK_MESSAGE(Contains(advice, part), advice);
}

}  // namespace

TEST_CASE("every text and code has a meaning, and a failure has advice") {
  using enum logcheck::Role;
  for (const logcheck::TextGroup& group : logcheck::TextGroups()) {
    for (const logcheck::Text& text : group.texts) {
      INFO(Bytes(text.text));
      CHECK(!text.means.empty());
      for (const auto role : {trouble, value_missing, not_installed, facts_missing, mismatch, launch_failed})
        CHECK((text.role != role || !text.advice.empty()));
    }
  }
  for (const View code : kNetworkErrorCodes) {
    const bool http = code.size() == 3 && code != L"122";
    CHECK_MESSAGE(!Contains(logcheck::FindCode(Bytes(code), http).advice, "look it up"), Bytes(code));
  }
}

TEST_CASE("runs are told apart, whole or torn, in blocks of any size") {
  const std::string check = Join({kEntriesStart, kEntriesEnd, kUpdatesStart, kDetailsFound[1], kUpdatesEnd});
  const std::string header = "[2026-11-21T22:30 start-up 2.0.3.0 15.0.2.5 user]";
  const struct {
    std::string log, shown;
  } cases[] = {
      {.log = kHeader + kHeader + check, .shown = header + header + " offered"},
      {.log = "\xEF\xBB\xBF" + kHeader + Bytes(kDetailsFound[3]) + kHeader,
       .shown = header + " offered" + header},
      // Settings lines before a check, and a failed launch and an error line after it, belong to it.
      {.log = kHeader + Join({settings_texts::kFileExists}) + check +
              Join({ui_texts::kPathNotFound, ui_texts::kFileNotFound + std::wstring(L"C:\\Q\\Qrt.exe"),
                    L"November 21, 2026 Saturday 22:31: Error in System Tavrel Log File updates.Disk full",
                    L"November 21, 2026 Saturday 22:31: Error in System Tavrel Log File creation."}) +
              std::string(log_texts::kHistoryFailed) + "\n" + Join({kRetry}) + check + check,
       .shown = header + " offered offered offered"},
      // A header that is glued to a torn line, one that begins in its middle, zeros, a second byte order
      // mark.
      {.log = check + "Client side requ" + kHeader + check + std::string(9, '\0') + "\xEF\xBB\xBF" +
              kHeader.substr(kHeader.find("Date/")) + check,
       .shown = "[ ?   ?] offered <Client side requ>" + header +
                " offered[2026-11-21T22:30 start-up  15.0.2.5 user] offered"},
      {.log = "foreign\n500\nDate/Time : Saturday 24:00, Smarch 1, 2026\r\r",
       .shown = "[ ?   ?] <foreign> <500>"},
      {.log = Join(
           {L"Varnexa 15.0 Build Version : NA", L"App  Mode: Admin, User Mode: NA, Invoke Mode: Regular."}),
       .shown = "[ interactive   admin]"},
      {.log = Join({kProbeFailed, kRetry, kDetailsFound[3]}), .shown = "[ ?   ?] failed offered"},
      {.log = "", .shown = ""},
  };
  for (const auto& each : cases) {
    for (const std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{4096}})
      CHECK(Shown(RunsOf(each.log, block)) == each.shown);
  }
}

TEST_CASE("the memory for a log has a bound") {
  std::string log;
  for (int i = 0; i < 3000; ++i) log += "foreign\n";
  log += std::string(100000, 'x') + "\n";
  const std::vector<logcheck::Run> foreign = RunsOf(log);
  CHECK(foreign[0].unknown_lines == 3001);
  CHECK(foreign[0].unknown.size() == 1000);
  CHECK(RunsOf(std::string(100000, 'x'))[0].unknown[0].size() == 4096);
  log = kHeader;
  while (log.size() < 400000) log += Join({kRetry, kProbeFailed});
  CHECK(RunsOf(log).size() == 2);
}

TEST_CASE("the outcome, code, step and advice of a check are those that decided it") {
  const View no_address = kTagThree.query_failed;
  const std::wstring file = ui_texts::kFileNotFound + std::wstring(L"C:\\Q\\Qrt.exe,0");
  const std::string mismatch = "settings-mismatch 0 " + Bytes(kMismatch);
  const std::wstring error = std::wstring(kErrorPrefix).append(kMismatch);
  CheckJudged({kHostMatched, kFound, kCompleted, kDetailsFound[3]}, "offered 3 ", {}, "Install Updates");
  // Windows' own message, in any language, is no foreign line.
  CheckJudged({kCompleted, kRecordFound, L"Zugriff verweigert", kRecordReadFailed, kDetailsFound[2]},
              "offered 2 ", {}, "(Zugriff verweigert)");
  CheckJudged({kCompleted, kDetailsNotFound[2], kMatching}, "none 2 ", {},
              "No pack of the list is newer than Qrt.exe;");
  // A record that names every pack hides a newer one from a client that lacks it.
  CheckJudged({kCompleted, kDetailsNotFound[1], kMatching}, "none 1 ", {},
              "if that is older, delete installedupdates.dat");
  CheckJudged({kCompleted, kDetailsNotFound[1], kMatching}, "none 1 ", {}, "keep the record", false);
  // The record can be right where the version was not read.
  CheckJudged({kCompleted, kRecordFound, kRecordRead, kRecordDeleted, kDetailsFound[1]}, "offered 1 ", {},
              "a version that is not read counts as 0");
  CheckJudged({kCompleted, kRecordDenied, kDetailsFound[1]}, "offered 1 ", {}, "only if its pack is newer");
  CheckJudged({kCompleted, kRecordDeletedInteractive, kDetailsFound[1]}, "offered 1 ", {}, "keep the record",
              false);
  // A portal's page.
  CheckJudged({kFound, kCompleted, kRecordMissing, kDetailsNotFound[3]}, "no-list 3 ", {}, "updates.ini");
  // The code of the probe without its advice; what follows a failure means nothing.
  CheckJudged(
      {kProbeFailed, L" Error : 2250 Please check your network and permissions.", kDetailsNotFound[3]},
      "failed 3 2250", kProbeFailed, "the probe address");
  CheckJudged({kOptionStatus, L"12009", kSendRequestFailed, L" Error : 12029", kDetailsNotFound[3]},
              "failed 3 12029", kSendRequestFailed, "(12009: ");
  CheckJudged({kSendRequestFailed, L" Error : 12039"}, "failed 0 12039", kSendRequestFailed,
              "without a redirection");
  CheckJudged({kSendRequestFailed, L" Error : 4711"}, "failed 0 4711", kSendRequestFailed, "net helpmsg");
  CheckJudged({kNotFound, L" Error : 404"}, "failed 0 404", kNotFound,
              "404: nothing is at the address of the list");
  CheckJudged({kStatusCode, L"0", kStatusFailed, L" Error : 12150"}, "failed 0 12150", kStatusFailed,
              "12150");
  CheckJudged({kCompleted, kCopiedMissing, kDetailsNotFound[3]}, "failed 3 " + Bytes(kCopiedMissing),
              kCopiedMissing, "%TEMP%");
  // Another status than 200 and 404 is a failure unless a list came with it.
  CheckJudged({kStatusCode, L"500", kCompleted, kDetailsNotFound[3]}, "failed 3 500", kStatusCode,
              "an error within");
  CheckJudged({kStatusCode, L"599", kCompleted, kDetailsNotFound[3], kMatching}, "none 3 599", kStatusCode,
              "the server is in trouble");
  CheckJudged({kStatusCode, L"203", kCompleted, kDetailsFound[1]}, "offered 1 203", kStatusCode,
              "without the list");
  CheckJudged({kStatusCode, L"203", kCompleted}, "facts-missing 0 ", {}, "the file version of Qrt.exe");
  CheckJudged({kUrlMode, kInvalidTagThree, error}, mismatch, kUrlMode, "remove UPDATE_LOC_URL");
  CheckJudged({kHostNotMatched, kInvalidTagThree, error}, mismatch, kHostNotMatched,
              "if it is empty, the built-in host");
  CheckJudged({kHostMatched, kInvalidTagThree, error}, mismatch, kInvalidTagThree, "a slash");
  CheckJudged({no_address, L"Error : 2", kHostNotMatched, kInvalidTagThree, error}, mismatch, no_address,
              "nstall Varnexa 15.0 again");
  // A value that was read at the other place after all is not what is missing. Installing again helps
  // against code 2 only.
  CheckJudged({kTagOne.open_failed, L"Error : 2", kTagOne.alternative_completed, no_address, L"Error : 5"},
              "facts-missing 0 5", no_address, "access is denied); let an administrator");
  CheckJudged({kTagTwo.query_failed, L"Error : 234", kEntriesNotFound}, "facts-missing 0 234",
              kTagTwo.query_failed, "a shorter path");
  CheckJudged({kEntriesNotFound}, "facts-missing 0 ", kEntriesNotFound, "nstall Varnexa 15.0 again");
  CheckJudged({kVersionNotFound}, "not-installed 0 ", kVersionNotFound, "if it is to be on this computer");
  CheckJudged({kClientVersion.completed, kVersionNotFound}, "not-installed 0 ", kVersionNotFound,
              "not exactly \"15.0\", so no server was asked; correct it");
  // The utility never replaces a file that the same run may have made.
  CheckJudged(
      {settings_texts::kSourceNotFound, L"Error : 2", settings_texts::kValidationFailed, kDetailsFound[3]},
      "offered 3 ", {}, "then delete the user's own korsa.ini");
  CheckJudged({kDetailsFound[3], kUpdatesEnd, file}, "offered 3 ", file,
              "missing (C:\\Q\\Qrt.exe,0); correct DisplayIcon");
  CheckJudged({kDetailsFound[3],
               L"November 21, 2026 Saturday 22:31: Error in System Tavrel Log File updates.Disk full"},
              "offered 3 ", {}, "(Disk full)");
  CHECK(RunsOf(Join({kEntriesStart, kHostMatched}))[0].LastCheck().error == "the log ends here");
}
