#include <doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

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
using Text = std::wstring;
using View = std::wstring_view;
using Lines = std::initializer_list<View>;

const Text kHeader =
    L"====================================================\n"
    L"Varnexa 15.0 Tavrel Utility File Version : 2.0.3.0\n"
    L"Varnexa 15.0 Tavrel Utility Date/Time : Saturday 22:30, November 21, 2026\n"
    L"Varnexa 15.0 Build Version : 15.0.2.5\n"
    L"====================================================\n"
    L"App  Mode: User, User Mode: NA, Invoke Mode: Patch verfication.\n";
constexpr View kHeaderRead = L"[2026-11-21T22:30 product 2.0.3.0 15.0.2.5 user]";

Text Join(Lines lines) {
  Text log;
  for (const View line : lines) log.append(line).append(L"\r\n");
  return log;
}

std::vector<logcheck::Run> RunsOf(View log) {
  std::vector<logcheck::Run> runs;
  logcheck::ReadLog(log, [&](logcheck::Run&& run) { runs.push_back(std::move(run)); });
  return runs;
}

/// Each run: what its header says, the outcomes of its checks, and the lines that are unknown.
Text Read(View log) {
  Text result;
  for (const logcheck::Run& run : RunsOf(log)) {
    const Text mode = !run.by_product ? L"?" : *run.by_product ? L"product" : L"user";
    const Text rights = !run.administrator ? L"?" : *run.administrator ? L"admin" : L"user";
    result += L"[" + run.time + L" " + mode + L" " + run.utility + L" " + run.product + L" " + rights + L"]";
    for (const logcheck::Check& check : run.checks) {
      const std::string_view outcome = NameOf(Judge(check).outcome);
      result += L" " + Text(outcome.begin(), outcome.end());
    }
    for (const Text& line : run.unknown) result += L" <" + line + L">";
  }
  return result;
}

/// Outcome, exit code, error and step of a check with these entries between its last two frame lines.
Text Judged(Lines before, Lines entries = {}) {
  const Text log = Join({kEntriesStart}) + Join(before) + Join({kEntriesEnd, kUpdatesStart}) + Join(entries) +
                   Join({kUpdatesEnd});
  const std::vector<logcheck::Run> runs = RunsOf(log);
  REQUIRE(runs.size() == 1);
  REQUIRE(runs[0].checks.size() == 1);
  CHECK(runs[0].unknown.empty());
  const logcheck::Verdict verdict = Judge(runs[0].checks[0]);
  const std::string_view name = NameOf(verdict.outcome);
  return Text(name.begin(), name.end()) + L" " + text::FormatDecimal(verdict.exit_code.value_or(0)) + L" " +
         verdict.error + L" @" + verdict.step;
}

void CheckJudged(Lines before, Lines entries, const Text& outcome, View step = {}) {
  CHECK(Literal(Judged(before, entries)) == Literal(outcome + L" @" + Text(text::Trim(step))));
}

/// The string literals of a header, joined as the compiler does, each with the name of its constant.
std::vector<std::pair<std::string, Text>> LiteralsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string source, line, name;
  while (std::getline(file, line)) source += line.substr(0, line[0] == '#' ? 0 : line.find("//")) + "\n";
  std::vector<std::pair<std::string, Text>> literals;
  bool joins = false;
  for (std::size_t i = 0; i < source.size(); ++i) {
    const std::size_t end =
        source.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz", i);
    const std::string word = source.substr(i, end - i);
    if (source[i] == '"') {
      if (!joins) literals.emplace_back(name, Text());
      for (++i; source[i] != '"'; ++i) {
        const bool escaped = source[i] == '\\';
        if (escaped) ++i;
        literals.back().second += escaped && source[i] == 'n' ? L'\n' : static_cast<wchar_t>(source[i]);
      }
      joins = true;
    } else if (word == "TAVREL_PRODUCT_VERSION") {
      literals.back().second += L"15.0";
    } else if (word.size() > 1) {
      if (word[0] == 'k') name = word;
      joins = false;
    } else if (word != "L" && source[i] != ' ' && source[i] != '\n') {
      joins = false;
    }
    if (!word.empty()) i = end - 1;
  }
  return literals;
}

bool IsExplained(View wanted) {
  for (const logcheck::TextGroup& group : logcheck::TextGroups()) {
    for (const logcheck::Text& text : group.texts) {
      if (text::Trim(text.text) == text::Trim(wanted)) return !text.means.empty();
    }
  }
  return std::any_of(logcheck::Codes().begin(), logcheck::Codes().end(),
                     [&](const logcheck::Code& code) { return code.code == wanted; });
}

}  // namespace

TEST_CASE("every text that the utility logs is explained") {
  // Shown by windows only, or no entry of their own; words without a blank are names, keys and formats.
  std::set<std::string> exempt = {
      "kDateTimeFormat", "kBuildVersion", "kUserMode",     "kErrorLineFormat",  "kMissingFacts",
      "kCheckNetwork",   "kListNotFound", "kNoUpdates",    "kUpdatesAvailable", "kConnectionFailed",
      "kNotInstalled",   "kNote",         "kCloseProduct", "kSaveFilter",       "kBadFileName",
      "kLogSaved",       "kLogNotSaved",  "kTitle",        "kVersion",          "kBuild",
      "kMakerNotice"};
  const auto left = exempt;
  const std::filesystem::path sources = std::filesystem::path(TAVREL_TESTS).parent_path() / "src";
  unsigned texts = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(sources)) {
    if (!entry.path().filename().string().ends_with("_texts.h")) continue;
    for (const auto& [name, text] : LiteralsOf(entry.path())) {
      if (text.find(L' ') == text.npos) continue;
      ++texts;
      INFO(name, ": ", Literal(text));
      if (left.contains(name)) {
        exempt.erase(name);
      } else {
        CHECK(IsExplained(text));
      }
    }
  }
  CHECK(texts > 100);
  CHECK(exempt.empty());
  for (const View code : kNetworkErrorCodes) CHECK(IsExplained(code));
}

TEST_CASE("runs are told apart, whole or torn") {
  const Text check = Join({kEntriesStart, kEntriesEnd, kUpdatesStart, kDetailsFound[1], kUpdatesEnd});
  const Text header(kHeaderRead);
  CHECK(Read(kHeader + kHeader + check) == header + header + L" offered");
  // Settings lines before, a failed launch and an error line behind the check belong to it.
  CHECK(Read(kHeader + Join({settings_texts::kFileExists}) + check +
             Join({ui_texts::kPathNotFound, ui_texts::kFileNotFound + Text(L"C:\\Q\\Qrt.exe"),
                   L"November 21, 2026 Saturday 22:31: Error in System Tavrel Log File updates.Disk full"}) +
             Join({kRetry}) + check + check) == header + L" offered offered offered");
  // A header that is glued to a torn line, one that begins in its middle, zeros, a second byte order mark.
  CHECK(Read(check + L"Client side requ" + kHeader + check + Text(9, L'\0') + L"\uFEFF" +
             kHeader.substr(kHeader.find(L"Date/")) + check) ==
        L"[ ?   ?] offered <Client side requ>" + header +
            L" offered[2026-11-21T22:30 product  15.0.2.5 user] offered");
  CHECK(Read(L"foreign\n500\nDate/Time : Saturday 24:00, Smarch 1, 2026\n") == L"[ ?   ?] <foreign> <500>");
  CHECK(Read(Join({L"Varnexa 15.0 Build Version : NA",
                   L"App  Mode: Admin, User Mode: NA, Invoke Mode: Regular."})) == L"[ user   admin]");
  CHECK(Read({}).empty());
}

TEST_CASE("a check's outcome, code and step are those that decided it") {
  CheckJudged({}, {kHostMatched, kFound, kCompleted, kDetailsFound[3]}, L"offered 3 ");
  CheckJudged({}, {kCompleted, kDetailsNotFound[2], kMatching}, L"none 2 ");
  CheckJudged({}, {kCompleted, kRecordMissing, kDetailsNotFound[3]}, L"none 3 ");
  // The code of the probe without its advice; what follows a failure means nothing.
  CheckJudged(
      {}, {kProbeFailed, L" Error : 2250 Please check your network and permissions.", kDetailsNotFound[3]},
      L"failed 3 2250", kProbeFailed);
  CheckJudged({}, {kOptionStatus, L"12009", kSendRequestFailed, L" Error : 12029", kDetailsNotFound[3]},
              L"failed 3 12029", kSendRequestFailed);
  CheckJudged({}, {kStatusCode, L"0", kStatusFailed, L" Error : 12150"}, L"failed 0 12150", kStatusFailed);
  CheckJudged({}, {kCompleted, kCopiedMissing, kDetailsNotFound[3]}, L"failed 3 " + Text(kCopiedMissing),
              kCopiedMissing);
  // Another status than 200 and 404 is a failure unless a list came with it.
  CheckJudged({}, {kStatusCode, L"500", kCompleted, kDetailsNotFound[3]}, L"failed 3 500", kStatusCode);
  CheckJudged({}, {kStatusCode, L"500", kCompleted, kDetailsNotFound[3], kMatching}, L"none 3 500",
              kStatusCode);
  CheckJudged({}, {kStatusCode, L"203", kCompleted, kDetailsFound[1]}, L"offered 1 203", kStatusCode);
  const Text mismatch = L"settings-mismatch 0 " + Text(kMismatch);
  const Text mismatch_entry = Text(kErrorPrefix).append(kMismatch);
  CheckJudged({}, {kUrlMode, kInvalidTagThree, mismatch_entry}, mismatch, kUrlMode);
  CheckJudged({}, {kHostNotMatched, kInvalidTagThree, mismatch_entry}, mismatch, kHostNotMatched);
  CheckJudged({}, {kHostMatched, kInvalidTagThree, mismatch_entry}, mismatch, kInvalidTagThree);
  const View no_address = registered_texts::kTagThree.query_failed;
  CheckJudged({no_address, L"Error : 2"}, {kHostNotMatched, kInvalidTagThree, mismatch_entry}, mismatch,
              no_address);
  // A value that was read at the other place after all is not what is missing.
  CheckJudged({registered_texts::kTagOne.open_failed, L"Error : 2",
               registered_texts::kTagOne.alternative_completed, no_address, L"Error : 5"},
              {}, L"facts-missing 0 5", no_address);
  CheckJudged({}, {kEntriesNotFound}, L"facts-missing 0 ", kEntriesNotFound);
  CheckJudged({}, {kHostMatched, kFound, kCompleted}, L"facts-missing 0 ");
  CheckJudged({kVersionNotFound}, {}, L"not-installed 0 ", kVersionNotFound);
  CHECK(Read(Join({kEntriesStart, kEntriesEnd, kUpdatesStart, kHostMatched})) == L"[ ?   ?] failed");
}

TEST_CASE("the advice names what helps") {
  const auto advise = [](Lines lines) {
    const logcheck::Verdict verdict = Judge(RunsOf(Join(lines))[0].checks[0]);
    return verdict.advice + (verdict.notes.empty() ? "" : " | " + verdict.notes.back());
  };
  const auto has = [](const std::string& advice, const char* part) {
    return advice.find(part) != advice.npos;
  };
  CHECK(has(advise({kSendRequestFailed, L" Error : 12007"}), "(DNS)"));
  CHECK(has(advise({kSendRequestFailed, L" Error : 4711"}), "net helpmsg"));
  CHECK(has(advise({kStatusCode, L"500"}), "500: an error within the server"));
  CHECK(has(advise({kStatusCode, L"599"}), "the server is in trouble"));
  CHECK(has(advise({registered_texts::kClientVersion.completed, kVersionNotFound}), "nother version"));
  CHECK(has(advise({kDetailsFound[3], kUpdatesEnd, ui_texts::kFileNotFound}), "DisplayIcon"));
  // Windows' own message, in any language, is no foreign line.
  CHECK(has(advise({kRecordFound, L"Zugriff verweigert", kRecordReadFailed, kDetailsFound[2]}),
            "| The record installedupdates.dat"));
}
