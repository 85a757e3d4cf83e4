#include <doctest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "console/text.h"
#include "log/log_rules.h"
#include "packcheck/report.h"
#include "support/table.h"
#include "text/text.h"
#include "ui/page_rules.h"
#include "ui/ui_texts.h"
#include "update/check_rules.h"
#include "update/section_names.h"

/// Failures show wide texts.
template <>
struct doctest::StringMaker<std::wstring> {
  static String convert(const std::wstring& text) { return Literal(text).c_str(); }
};

namespace {

using Text = std::wstring;
using View = std::wstring_view;

Text Newest(View sections) {
  LatestPack latest{4, 4};
  FindLatestPack(Split(sections), latest);
  return std::to_wstring(latest.level) + L'.' + std::to_wstring(latest.build);
}

/// A list, and a record if there is a "|": the codes of warnings, each with its name.
Text Warned(View in) {
  const std::size_t bar = in.find(L'|');
  const std::string record = bar == in.npos ? "" : Bytes(in.substr(bar + 1));
  const auto known = bar == in.npos ? std::nullopt : std::optional<std::string_view>(record);
  Text codes;
  for (const auto& warning : packcheck::Examine(Bytes(in.substr(0, bar)), known, {}).warnings) {
    codes += (codes.empty() ? L"" : L" ") + WidenBytes(warning.code) + L":" + warning.name;
  }
  return codes;
}

/// Two lists and a record: the ranges of versions with another answer, "+" where updates are offered, "d"
/// where the record is deleted.
Text Compared(View in) {
  const std::vector<Text> files = Split(in);
  const auto shown = [](const packcheck::Answer& answer) {
    return std::to_string(answer.exit_code) + (answer.offered ? "+" : "-") +
           (answer.record_deleted ? "d" : "");
  };
  std::string text;
  const std::string record = Bytes(files[2]);
  const auto comparison =
      packcheck::Compare(Bytes(files[0]), Bytes(files[1]),
                         files[2].empty() ? std::nullopt : std::optional<std::string_view>(record));
  for (const auto& change : comparison.changes) {
    text +=
        change.from + " to " + change.to + " " + shown(change.before) + " > " + shown(change.after) + ", ";
  }
  return WidenBytes(text + std::to_string(comparison.warnings));
}

Text Decided(View in) {
  const Decision decision = DecideFor(in);
  Text told = std::to_wstring(decision.exit_code);
  told += !decision.offered ? L" as before" : *decision.offered ? L" yes" : L" no";
  if (decision.delete_record) told += L", deleted";
  for (const View entry : decision.entries) told.append(L"|").append(entry);
  return told;
}

const std::map<Text, Text (*)(View)> kFunctions = {
    {L"Newest", Newest},
    {L"Recorded",
     [](View in) {
       const std::size_t bar = in.find(L'|');
       return std::to_wstring(CountRecordedPacks(Split(in.substr(bar + 1)), in.substr(0, bar)));
     }},
    {L"Record version",
     [](View in) {
       const auto version = ParseRecordVersion(in);
       return version ? std::to_wstring(*version) : L"none";
     }},
    {L"Decide", Decided},
    {L"Request", [](View in) { return Text(RequestPath(in, L"up.example").value_or(L"none")); }},
    {L"Warnings", Warned},
    {L"Compare", Compared},
    {L"Printable",
     [](View in) { return console::DecodeText(console::Printable(std::string_view(Bytes(in)))); }},
    {L"Normalise", [](View in) { return log_rules::Normalise(Text(in)); }},
};

}  // namespace

TEST_CASE("texts and numbers") {
  CHECK(text::Trim(L"\t a b\r\n") == L"a b");
  CHECK(text::Trim(L" \t\v\f\r\n\x85\xA0\x1680\x2000\x200A\x2028\x2029\x202F\x205F\x3000").empty());
  CHECK(text::IsTrueText(L"tRuE"));
  CHECK_FALSE(text::IsTrueText(L"false"));
  CHECK(text::IsBooleanText(L"false"));
  CHECK_FALSE(text::IsBooleanText(L"TRUE1"));
  CHECK(text::ParseDecimal(L"+07z8") == 7);
  CHECK(text::ParseDecimal(L" 7") == 0);
  CHECK(text::ParseDecimal(L"2147483648") == 2147483647);
  CHECK(text::ParseDecimal(L"-99999999999999999999999999") == INT32_MIN);
  CHECK(text::FoldVersion(15, 2, 1, 12) == 15222);
  CHECK(text::FoldVersion(INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX) == INT32_MAX);
  CHECK(text::SplitAtLastBackslash(L"C:\\QRT 15\\Qrt.exe").folder == L"C:\\QRT 15");
  CHECK(text::SplitAtLastBackslash(L"C:\\QRT 15\\Qrt.exe").file == L"Qrt.exe");
  CHECK(text::SplitAtLastBackslash(L"C:/QRT/Qrt.exe").file.empty());
}

TEST_CASE("the log file has lines that end with CR and LF, and the version in each build line") {
  CHECK(log_rules::WithCrLf("a\n\nb\r\n") == "a\r\n\r\nb\r\r\n");
  CHECK(log_rules::WithLf("a\r\r\nb\r") == "a\r\nb\r\n");
  Text log = L"Build : NA\nUser Mode: NA\nBuild : NA";
  log_rules::ReplaceBuildLine(log, L"Build : NA", L"15.0.2.7");
  CHECK(log == L"Build : 15.0.2.7\nUser Mode: NA\nBuild : 15.0.2.7");
}

TEST_CASE(
    "a run's log goes to the newest file, the last of equally new ones, and a new one beside exactly two") {
  using Times = std::initializer_list<std::uint64_t>;
  const auto choose = [](Times times) {
    std::vector<log_rules::LogFileEntry> files;
    for (const std::uint64_t time : times) files.push_back({L"", time << 48});
    return log_rules::ChooseLogFile(files);
  };
  CHECK(choose({}) == std::nullopt);
  CHECK(choose({1}) == 0);
  CHECK(choose({9, 1}) == 0);
  CHECK(choose({2, 2}) == std::nullopt);
  CHECK(choose({1, 3, 3, 1}) == 2);
}

TEST_CASE("a saved log has the extension .txt") {
  CHECK(SavedLogPath(L"C:\\my.logs\\log") == L"C:\\my.logs\\log.txt");
  CHECK(SavedLogPath(L"a.b.txt") == L"a.b.txt");
  CHECK(SavedLogPath(L"C:\\log.TXT") == std::nullopt);
  CHECK(SavedLogPath(L"C:\\log.txt.bak") == std::nullopt);
}

TEST_CASE("the page shows updates, a failure or neither, and the buttons for them") {
  using namespace ui_texts;
  // The first letters of the enabled buttons Install, Retry and Continue, and the text.
  const auto page = [](PageResults results, bool installed = true) {
    results.product_installed = installed;
    const PageState state = DecidePageState(results);
    return Text(state.install_enabled ? L"I" : L"") + (state.retry_enabled ? L"R" : L"") +
           (state.continue_offered ? L"C" : L"") + state.text;
  };
  const auto with = [](const wchar_t* buttons, View text) { return Text(buttons).append(text); };
  CHECK(page({.sheet_updates_available = true, .sheet_check_failed = true, .sheet_error_text = L"12007"}) ==
        with(L"I", kUpdatesAvailable));
  CHECK(page({.sheet_check_failed = true, .sheet_error_text = L"12007"}) ==
        with(L"R", kConnectionFailed) + L"12007");
  CHECK(page({.sheet_check_failed = true, .sheet_error_text = L"14045"}) ==
        with(L"R", kListNotFound) + L"14045");
  CHECK(page({.sheet_check_failed = true}) == kNoUpdates);
  CHECK(page({.last_check_failed = true, .last_check_error = L"404", .last_updates_found = true}) ==
        kNoUpdates);
  CHECK(page({.sheet_check_failed = true, .sheet_error_text = L"404"}, false) == kNotInstalled);

  CHECK(page({.interactive = false, .sheet_check_failed = true, .sheet_error_text = L"12007"}) == kNoUpdates);
  CHECK(page({.interactive = false, .last_updates_found = true}) == with(L"IC", kUpdatesAvailable));
  CHECK(page({.interactive = false,
              .last_check_failed = true,
              .last_check_error = L"12007",
              .last_updates_found = true}) == with(L"R", kConnectionFailed) + L"12007");
  CHECK(page({.interactive = false, .last_check_failed = true, .last_updates_found = true}) == L"");
  CHECK(page({.interactive = false, .last_updates_found = true}, false) == with(L"C", kNotInstalled));
}

TEST_CASE("lists, records and logs are parsed as their table says") {
  Text function;
  for (const Row& row : ReadTable("unit/rows.txt")) {
    INFO(Literal(function), ", row ", Literal(row.input));
    if (row.input == L"table") {
      function = row.result;
    } else {
      CHECK(Literal(kFunctions.at(function)(row.input)) == Literal(row.result));
    }
  }
}

TEST_CASE("the sections of a list have the names that Windows finds, as many as a buffer holds") {
  for (const Row& row : ReadTable("unit/section_names.txt")) {
    const std::vector<Text> names = ReadSectionNames(Bytes(row.input));
    Text joined = std::to_wstring(CountWholeNames(names, 8));
    for (const Text& name : names) joined.append(L"|").append(name);
    CHECK(Literal(joined) == Literal(row.result));
  }
}

TEST_CASE("the names in a buffer end at the first empty one") {
  std::vector<Text> names;
  AppendSectionNames({L"H\0P_1\0\0P_2\0", 11}, names);
  CHECK(names == std::vector<Text>{L"H", L"P_1"});
}

TEST_CASE("packs beyond the clients' buffer are a warning, and the newest of all packs is one of its own") {
  Text packs;
  for (int build = 1; build <= 70; ++build) packs += L"[Varnexa15_0_1_" + std::to_wstring(build) + L"]\n";
  CHECK(Warned(L"[H]\n[Varnexa15_0_2_7]\n" + packs) == L"beyond-limit:Varnexa15_0_1_60");
  CHECK(Warned(L"[H]\n" + packs + L"[Varnexa15_0_0_1]\n") == L"newest-beyond-limit:Varnexa15_0_1_70");
}
