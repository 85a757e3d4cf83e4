// packcheck: shows a publisher, before publication, how clients read a list of updates and what they do.
#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "console/command_line.h"
#include "console/input.h"
#include "console/text.h"
#include "packcheck/output.h"
#include "packcheck/report.h"
#include "update/check_rules.h"
#include "update/section_names.h"

namespace {

struct Options {
  bool json = false, compare = false;
  std::string product;
  std::optional<std::string> record;
  std::vector<std::string> lists, ignored;
};

/// Parses exactly four 16-bit numbers that are separated by dots.
std::optional<packcheck::Version> ParseVersion(const std::string& text) {
  packcheck::Version version{};
  const std::string dotted = "." + text;
  const char *at = dotted.data(), *const end = at + dotted.size();
  for (std::uint16_t& number : version) {
    if (at == end || *at != '.') return std::nullopt;
    const auto [next, error] = std::from_chars(at + 1, end, number);
    if (error != std::errc()) return std::nullopt;
    at = next;
  }
  return at == end ? std::optional(version) : std::nullopt;
}

std::string CheckVersion(const std::string& text) {
  return ParseVersion(text) ? ""
                            : "'" + text + "' is not a version: four numbers up to 65535, as in 15.0.2.5";
}

/// The error in the combination of options; empty when there is none.
std::string CheckUse(const Options& options) {
  if (options.lists.empty()) return "name a list of updates";
  if (options.compare && options.lists.size() != 2) return "--compare takes two lists, OLD and NEW";
  const auto inputs = std::count(options.lists.begin(), options.lists.end(), "-") + (options.record == "-");
  return inputs > 1 ? "only one list or record can be standard input" : "";
}

int CheckLists(const CLI::App& app, const Options& options, std::optional<std::string_view> record) {
  int status = console::kClean;
  const bool several = options.lists.size() > 1;
  for (const std::string& list : options.lists) {
    const console::Input input = console::Read(console::PathOf(list), kListSizeLimit);
    if (!input.error.empty()) {
      status = console::Fail(app, input.error);
      continue;
    }
    packcheck::Report report = packcheck::Examine(input.bytes, record, ParseVersion(options.product));
    std::erase_if(report.warnings, [&](const packcheck::Warning& warning) {
      return std::count(options.ignored.begin(), options.ignored.end(), warning.code) != 0;
    });
    const bool named = several && !options.json;
    std::string text = named && &list != &options.lists.front() ? "\n" : "";
    if (named) text.append(console::Printable(std::string_view(list))).append(":\n");
    text += options.json ? packcheck::AsJson(report, several ? list : "") : packcheck::AsText(report);
    if (!console::Print(app, text)) return console::kFailed;
    if (!report.warnings.empty()) status = std::max<int>(status, console::kFound);
  }
  return status;
}

int CompareLists(const CLI::App& app, const Options& options, std::optional<std::string_view> record) {
  const console::Input before = console::Read(console::PathOf(options.lists[0]), kListSizeLimit);
  const console::Input after = console::Read(console::PathOf(options.lists[1]), kListSizeLimit);
  if (!before.error.empty() || !after.error.empty())
    return console::Fail(app, before.error.empty() ? after.error : before.error);
  const auto comparison = packcheck::Compare(before.bytes, after.bytes, record);
  if (!console::Print(app, options.json ? packcheck::AsJson(comparison) : packcheck::AsText(comparison)))
    return console::kFailed;
  return comparison.changes.empty() ? console::kClean : console::kFound;
}

}  // namespace

int console::RunTool(const std::vector<std::string>& arguments) {
  CLI::App app("Says what every client will read in a list of updates, and what it will do.", "packcheck");
  app.footer(
      "Exit status: 0 no warnings (with --compare: no changes), 1 warnings (changes), 2 wrong use or a file\n"
      "that cannot be read. Of several lists, the highest.");
  Options options;
  app.add_option("LIST", options.lists, "Lists of updates; - for standard input")->type_name("");
  app.add_flag("--json", options.json, "Print JSON, one object for each list, instead of text");
  auto* product =
      app.add_option("--product", options.product,
                     "Only for a client whose Qrt.exe has this version, with the log of its start-up check")
          ->type_name("A.B.C.D")
          ->check(CheckVersion);
  app.add_option("--record", options.record, "All clients have this installedupdates.dat")->type_name("FILE");
  auto* ignore =
      app.add_option("--ignore", options.ignored, "Leave out the warnings of this code; can be repeated")
          ->type_name("CODE")
          ->allow_extra_args(false)
          ->check(CLI::IsMember(packcheck::WarningCodes()).description(""));
  app.add_flag("--compare", options.compare,
               "Of two lists, OLD and NEW: show only the clients that get another answer")
      ->excludes(product)
      ->excludes(ignore);
  if (const auto status = Parse(app, arguments)) return *status;
  const std::string wrong = CheckUse(options);
  if (!wrong.empty()) return Fail(app, wrong + "; packcheck --help shows the usage");
  Input record;
  if (options.record) record = Read(PathOf(*options.record), kRecordSizeLimit);
  if (!record.error.empty()) return Fail(app, record.error);
  std::optional<std::string_view> record_bytes;
  if (options.record) record_bytes = record.bytes;
  return options.compare ? CompareLists(app, options, record_bytes) : CheckLists(app, options, record_bytes);
}
