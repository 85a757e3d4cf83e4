#include <doctest.h>

#include <map>

#include "console/text.h"
#include "log/log_rules.h"
#include "log/log_texts.h"
#include "packcheck/report.h"
#include "product/identity.h"
#include "support/table.h"
#include "text/text.h"
#include "ui/page_rules.h"
#include "update/decision.h"
#include "update/pack_list.h"
#include "update/record_text.h"
#include "update/request_path.h"
#include "update/section_names.h"
#include "update/update_texts.h"

namespace {

using Text = std::wstring;
using View = std::wstring_view;

Text Fold(View version) {
  std::vector<std::int32_t> n;
  for (const Text& field : Split(version, L'.')) n.push_back(text::ParseDecimal(field));
  return text::FormatDecimal(text::FoldVersion(n[0], n[1], n[2], n[3]));
}

Text Newest(View sections) {
  LatestPack latest{4, 4};
  FindLatestPack(Split(sections), latest);
  return std::to_wstring(latest.level) + L'.' + std::to_wstring(latest.build);
}

/// The codes of warnings, each with its name.
Text Warned(const std::string& list, std::optional<std::string_view> record = {}) {
  Text codes;
  for (const auto& warning : packcheck::Examine(list, record, {}).warnings) {
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
    text += packcheck::DottedText(change.from) + " to " + packcheck::DottedText(change.to) + " " +
            shown(change.before) + " > " + shown(change.after) + ", ";
  }
  return WidenBytes(text + std::to_string(comparison.warnings));
}

// The record ("-": there is none), the executable's version, the list.
Text DecideFor(View in) {
  std::vector<Text> sections = Split(in);
  const Text record = sections[0], version = sections[1];
  sections.erase(sections.begin(), sections.begin() + 2);
  std::vector<Text> fields = Split(version, L'.');
  fields.resize(4);
  LatestPack latest;
  FindLatestPack(sections, latest);
  CheckFacts facts{.sections = sections,
                   .latest = latest,
                   .record = record,
                   .product_level = fields[2],
                   .product_build = fields[3]};
  if (record == L"-") facts.record.reset();
  if (!version.empty()) facts.product_version = text::ParseDecimal(Fold(version));
  const Decision decision = Decide(facts, L"deleted");
  Text told = std::to_wstring(decision.exit_code);
  told += !decision.offered ? L" as before" : *decision.offered ? L" yes" : L" no";
  if (decision.removal) told.append(L", ").append(decision.removal->deleted);
  for (const View entry : decision.entries) told.append(L"|").append(entry);
  return told;
}

Text Cut(View path) {
  const text::SplitPath split = text::SplitAtLastBackslash(path);
  return Text(split.folder).append(L"|").append(split.file);
}

Text Choose(View times) {
  std::vector<log_rules::LogFileEntry> files;
  for (const wchar_t c : times) files.push_back({L"", static_cast<std::uint64_t>(c) << 48});
  const auto chosen = log_rules::ChooseLogFile(files);
  return chosen ? std::to_wstring(*chosen) : L"new";
}

Text Joined(const std::vector<Text>& names) {
  Text joined;
  for (const Text& name : names) joined.append(L"|").append(name);
  return joined;
}

Text Page(bool interactive, View in) {
  const std::vector<Text> parts = Split(in);
  const auto has = [&parts](wchar_t flag) { return parts[0].find(flag) != Text::npos; };
  const auto error = [&parts](const wchar_t* whose) {
    return parts[1].empty() ? Text() : L" Error : " + parts[1] + whose;
  };
  const PageState state = DecidePageState({.interactive = interactive,
                                           .product_installed = has('i'),
                                           .sheet_updates_available = has('f'),
                                           .sheet_check_failed = has('x'),
                                           .sheet_error_text = error(L" (sheet)"),
                                           .last_check_failed = has('X'),
                                           .last_check_error = error(L" (page)"),
                                           .last_updates_found = has('F')});
  return Text(state.install_enabled ? L"I" : L"") + (state.retry_enabled ? L"R" : L"") +
         (state.continue_offered ? L"C|" : L"|") + state.text;
}

Text Optional(const auto& value) {
  return value ? Text(*value) : L"none";
}

const std::map<Text, Text (*)(View)> kFunctions = {
    {L"Trim", [](View in) { return Text(text::Trim(in)); }},
    {L"Boolean",
     [](View in) {
       return Text(text::IsBooleanText(in) ? L"boolean" : L"") + (text::IsTrueText(in) ? L" true" : L"");
     }},
    {L"Equal",
     [](View in) { return Text(text::EqualsIgnoreCase(in.substr(0, 1), in.substr(1)) ? L"equal" : L""); }},
    {L"Number", [](View in) { return std::to_wstring(text::ParseDecimal(in)); }},
    {L"Fold", Fold},
    {L"Cut", Cut},
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
    {L"Decide", DecideFor},
    {L"Request", [](View in) { return Optional(RequestPath(in, L"up.example")); }},
    {L"Buffer",
     [](View in) {
       std::vector<Text> names;
       AppendSectionNames(in, names);
       return Joined(names);
     }},
    {L"Warnings",
     [](View in) {
       // The bytes of a list, and of a record if there is one.
       const std::size_t bar = in.find(L'|');
       if (bar == in.npos) return Warned(Bytes(in));
       const std::string record = Bytes(in.substr(bar + 1));
       return Warned(Bytes(in.substr(0, bar)), record);
     }},
    {L"Compare", Compared},
    {L"Printable",
     [](View in) { return console::DecodeText(console::Printable(std::string_view(Bytes(in)))); }},
    {L"Normalise", [](View in) { return log_rules::Normalise(Text(in)); }},
    {L"Build line",
     [](View in) {
       std::vector<Text> parts = Split(in);
       log_rules::ReplaceBuildLine(parts[1], L"Varnexa 15.0 Build Version : NA", parts[0]);
       return parts[1];
     }},
    {L"CRLF", [](View in) { return WidenBytes(log_rules::WithCrLf(Bytes(in))); }},
    {L"LF", [](View in) { return WidenBytes(log_rules::WithLf(Bytes(in))); }},
    {L"Choose", Choose},
    {L"Saved path", [](View in) { return Optional(SavedLogPath(in)); }},
    {L"Regular page", [](View in) { return Page(true, in); }},
    {L"Patch page", [](View in) { return Page(false, in); }},
};

}  // namespace

// Other programs know these names: the product, its installer, the update server and the readers of the logs.
TEST_CASE("names that are shared with other programs") {
  CHECK(View(L"" TAVREL_MAKER) == L"NORVIK Software Inc.");
  CHECK(identity::kProductLabel == L"Varnexa 15.0");
  CHECK(identity::kWindowTitle == L"Varnexa 15.0 Tavrel Utility");
  CHECK(identity::kProductImage == L"Qrt.exe");
  CHECK(identity::kSettingsFolder == L"\\Varnexa\\QRT15\\");
  CHECK(identity::kLogFolder == L"\\Varnexa\\QRT15");
  CHECK(log_texts::kFilePrefix == L"QRT_15_SystemTavrel_");
  CHECK(View(update_texts::kAgent) == L"QRT_15_TavrelUtility");
}

TEST_CASE("every function of the pure part returns what its table says") {
  Row table(2);
  for (const Row& row : ReadTable("unit/rows.txt", 2, 3)) {
    if (row[0] == L"table") {
      table = row;
      continue;
    }
    INFO(Literal(table[1]), ", row ", Literal(row[0]));
    REQUIRE(row.size() == 2);
    CHECK(Literal(kFunctions.at(table[1])(row[0])) == Literal(row[1]));
  }
}

TEST_CASE("the sections of a list have the names that Windows finds, as many as a buffer holds") {
  for (const Row& row : ReadTable("unit/section_names.txt", 2, 2)) {
    const std::vector<Text> names = ReadSectionNames(Bytes(row[0]));
    CHECK(Literal(std::to_wstring(CountWholeNames(names, 8)) + Joined(names)) == Literal(row[1]));
  }
}

TEST_CASE("packs beyond the clients' buffer are a warning, and the newest of all packs is one of its own") {
  std::string packs;
  for (int build = 1; build <= 70; ++build) packs += "[Varnexa15_0_1_" + std::to_string(build) + "]\n";
  CHECK(Literal(Warned("[H]\n[Varnexa15_0_2_7]\n" + packs)) == "beyond-limit:Varnexa15_0_1_60");
  CHECK(Literal(Warned("[H]\n" + packs + "[Varnexa15_0_0_1]\n")) == "newest-beyond-limit:Varnexa15_0_1_70");
}
