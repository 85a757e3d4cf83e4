#include <doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
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
std::string Read(View log) {
  std::string result;
  for (const logcheck::Run& run : RunsOf(log)) {
    const char* mode = !run.by_product ? " ? " : *run.by_product ? " product " : " user ";
    const char* rights = !run.administrator ? " ?]" : *run.administrator ? " admin]" : " user]";
    result += "[" + Literal(run.time) + mode + Literal(run.utility) + " " + Literal(run.product) + rights;
    for (const logcheck::Check& check : run.checks) result.append(" ").append(NameOf(Judge(check).outcome));
    for (const Text& line : run.unknown) result += " <" + Literal(line) + ">";
  }
  return result;
}

/// The only check in a log of these entries must have this outcome, exit code, error and step.
void CheckJudged(Lines entries, const std::string& outcome, View step = {}) {
  const std::vector<logcheck::Run> runs = RunsOf(Join(entries) + Text(kUpdatesEnd));
  REQUIRE(runs.size() == 1);
  REQUIRE(runs[0].checks.size() == 1);
  CHECK(runs[0].unknown.empty());
  const logcheck::Verdict verdict = Judge(runs[0].checks[0]);
  CHECK(std::string(NameOf(verdict.outcome)) + " " + std::to_string(verdict.exit_code.value_or(0)) + " " +
            Literal(verdict.error) ==
        outcome);
  CHECK(Literal(verdict.step) == Literal(text::Trim(step)));
}

/// The string literals of a header, joined as the compiler does, each with the name of its constant.
std::vector<std::pair<std::string, Text>> LiteralsOf(const std::filesystem::path& header) {
  std::ifstream file(header);
  std::string source(std::istreambuf_iterator<char>(file), {});
  // Removes comments, directives, and the quotation marks between adjacent literals.
  source = std::regex_replace(source, std::regex("//.*|#.*"), "");
  source = std::regex_replace(source, std::regex("TAVREL_(PRODUCT_LABEL|COPYRIGHT)"), "\"Varnexa 15.0\"");
  source = std::regex_replace(source, std::regex(R"re(([^\\])"\s*L?")re"), "$1");
  const std::regex name_or_literal(R"re(\b(k\w+)|"((\\.|[^\\"])*)")re");
  std::vector<std::pair<std::string, Text>> literals;
  std::string name;
  for (std::sregex_iterator found(source.begin(), source.end(), name_or_literal), end; found != end;
       ++found) {
    const std::string literal = (*found)[2];
    if ((*found)[1].matched) name = (*found)[1];
    if (literal.empty()) continue;
    Text& text = literals.emplace_back(name, Text(literal.begin(), literal.end())).second;
    text::ReplaceAll(text, L"\\n", L"\n");
    text::ReplaceAll(text, L"\\\"", L"\"");
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
  std::set<std::string> unexplained;
  const std::filesystem::path sources = std::filesystem::path(TAVREL_TESTS).parent_path() / "src";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(sources)) {
    if (!entry.path().filename().string().ends_with("_texts.h")) continue;
    for (const auto& [name, text] : LiteralsOf(entry.path())) {
      // Words without a blank are names, keys and formats.
      if (text.find(L' ') != text.npos && !IsExplained(text)) unexplained.insert(name);
    }
  }
  std::string names;
  for (const std::string& name : unexplained) names += name + " ";
  // Shown by windows only, or no entry of their own.
  CHECK(names ==
        "kBadFileName kBuild kBuildVersion kCheckNetwork kCloseProduct kConnectionFailed kDateTimeFormat "
        "kErrorLineFormat kListNotFound kLogNotSaved kLogSaved kMakerNotice kMissingFacts kNoUpdates "
        "kNotInstalled kNote kSaveFilter kTitle kUpdatesAvailable kUserMode kVersion ");
  for (const View code : kNetworkErrorCodes) CHECK(IsExplained(code));
}

TEST_CASE("runs are told apart, whole or torn") {
  const Text check = Join({kEntriesStart, kEntriesEnd, kUpdatesStart, kDetailsFound[1], kUpdatesEnd});
  const std::string header = "[2026-11-21T22:30 product 2.0.3.0 15.0.2.5 user]";
  CHECK(Read(kHeader + kHeader + check) == header + header + " offered");
  // Settings lines before a check, and a failed launch and an error line after it, belong to it.
  CHECK(Read(kHeader + Join({settings_texts::kFileExists}) + check +
             Join({ui_texts::kPathNotFound, ui_texts::kFileNotFound + Text(L"C:\\Q\\Qrt.exe"),
                   L"November 21, 2026 Saturday 22:31: Error in System Tavrel Log File updates.Disk full"}) +
             Join({kRetry}) + check + check) == header + " offered offered offered");
  // A header that is glued to a torn line, one that begins in its middle, zeros, a second byte order mark.
  CHECK(Read(check + L"Client side requ" + kHeader + check + Text(9, L'\0') + L"\uFEFF" +
             kHeader.substr(kHeader.find(L"Date/")) + check) ==
        "[ ?   ?] offered <Client side requ>" + header +
            " offered[2026-11-21T22:30 product  15.0.2.5 user] offered");
  CHECK(Read(L"foreign\n500\nDate/Time : Saturday 24:00, Smarch 1, 2026\n") == "[ ?   ?] <foreign> <500>");
  CHECK(Read(Join({L"Varnexa 15.0 Build Version : NA",
                   L"App  Mode: Admin, User Mode: NA, Invoke Mode: Regular."})) == "[ user   admin]");
  CHECK(Read({}).empty());
}

TEST_CASE("a check's outcome, code and step are those that decided it") {
  CheckJudged({kHostMatched, kFound, kCompleted, kDetailsFound[3]}, "offered 3 ");
  // Windows' own message, in any language, is no foreign line.
  CheckJudged({kRecordFound, L"Zugriff verweigert", kRecordReadFailed, kDetailsFound[2]}, "offered 2 ");
  CheckJudged({kCompleted, kDetailsNotFound[2], kMatching}, "none 2 ");
  CheckJudged({kCompleted, kRecordMissing, kDetailsNotFound[3]}, "none 3 ");
  // The code of the probe without its advice; what follows a failure means nothing.
  CheckJudged(
      {kProbeFailed, L" Error : 2250 Please check your network and permissions.", kDetailsNotFound[3]},
      "failed 3 2250", kProbeFailed);
  CheckJudged({kOptionStatus, L"12009", kSendRequestFailed, L" Error : 12029", kDetailsNotFound[3]},
              "failed 3 12029", kSendRequestFailed);
  CheckJudged({kStatusCode, L"0", kStatusFailed, L" Error : 12150"}, "failed 0 12150", kStatusFailed);
  CheckJudged({kCompleted, kCopiedMissing, kDetailsNotFound[3]}, "failed 3 " + Literal(kCopiedMissing),
              kCopiedMissing);
  // Another status than 200 and 404 is a failure unless a list came with it.
  CheckJudged({kStatusCode, L"500", kCompleted, kDetailsNotFound[3]}, "failed 3 500", kStatusCode);
  CheckJudged({kStatusCode, L"500", kCompleted, kDetailsNotFound[3], kMatching}, "none 3 500", kStatusCode);
  CheckJudged({kStatusCode, L"203", kCompleted, kDetailsFound[1]}, "offered 1 203", kStatusCode);
  const std::string mismatch = "settings-mismatch 0 " + Literal(kMismatch);
  const Text error = Text(kErrorPrefix).append(kMismatch);
  CheckJudged({kUrlMode, kInvalidTagThree, error}, mismatch, kUrlMode);
  CheckJudged({kHostNotMatched, kInvalidTagThree, error}, mismatch, kHostNotMatched);
  CheckJudged({kHostMatched, kInvalidTagThree, error}, mismatch, kInvalidTagThree);
  const View no_address = registered_texts::kTagThree.query_failed;
  CheckJudged({no_address, L"Error : 2", kHostNotMatched, kInvalidTagThree, error}, mismatch, no_address);
  // A value that was read at the other place after all is not what is missing.
  CheckJudged({registered_texts::kTagOne.open_failed, L"Error : 2",
               registered_texts::kTagOne.alternative_completed, no_address, L"Error : 5"},
              "facts-missing 0 5", no_address);
  CheckJudged({kEntriesNotFound}, "facts-missing 0 ", kEntriesNotFound);
  CheckJudged({kHostMatched, kFound, kCompleted}, "facts-missing 0 ");
  CheckJudged({kVersionNotFound}, "not-installed 0 ", kVersionNotFound);
  CHECK(Read(Join({kEntriesStart, kEntriesEnd, kUpdatesStart, kHostMatched})) == "[ ?   ?] failed");
}

TEST_CASE("the advice names what helps") {
  const auto check_advice = [](Lines lines, const char* part) {
    const logcheck::Verdict verdict = Judge(RunsOf(Join(lines))[0].checks[0]);
    const std::string advice = verdict.advice + (verdict.notes.empty() ? "" : " | " + verdict.notes.back());
    INFO(advice);
    CHECK(advice.find(part) != advice.npos);
  };
  check_advice({kSendRequestFailed, L" Error : 12007"}, "(DNS)");
  check_advice({kSendRequestFailed, L" Error : 4711"}, "net helpmsg");
  check_advice({kStatusCode, L"500"}, "500: an error within the server");
  check_advice({kStatusCode, L"599"}, "the server is in trouble");
  check_advice({registered_texts::kClientVersion.completed, kVersionNotFound}, "nother version");
  check_advice({kDetailsFound[3], kUpdatesEnd, ui_texts::kFileNotFound}, "DisplayIcon");
  check_advice({kRecordFound, kRecordReadFailed, kDetailsFound[2]}, "| The record installedupdates.dat");
}
