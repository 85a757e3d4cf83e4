// packcheck: tells a publisher what clients make of a list of updates, before it is published.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "console/command_line.h"
#include "console/input.h"
#include "packcheck/output.h"
#include "packcheck/report.h"
#include "update/record_text.h"
#include "update/section_names.h"

namespace {

struct Options {
  bool json = false;
  std::optional<packcheck::Version> product;
  std::string record;
  std::string list;
};

/// Four numbers of 16 bits between points, and nothing else.
std::optional<packcheck::Version> ParseVersion(const std::string& text) {
  packcheck::Version version{};
  std::size_t field = 0, digits = 0;
  unsigned value = 0;
  for (const char c : text + ".") {
    if (c == '.') {
      if (digits == 0 || field == version.size()) return std::nullopt;
      version[field++] = static_cast<std::uint16_t>(value);
      value = 0;
      digits = 0;
      continue;
    }
    value = value * 10 + static_cast<unsigned>(c - '0');
    if (c < '0' || c > '9' || value > 0xFFFF) return std::nullopt;
    ++digits;
  }
  if (field != version.size()) return std::nullopt;
  return version;
}

std::string CheckVersion(const std::string& text) {
  return ParseVersion(text) ? ""
                            : "'" + text + "' is not a version: four numbers up to 65535, as in 15.0.2.5";
}

int Check(const CLI::App& app, const Options& options) {
  const console::Input list = console::Read(console::PathOf(options.list), kListSizeLimit);
  if (!list.error.empty()) return console::Fail(app, list.error);
  std::optional<std::string> record;
  if (!options.record.empty()) {
    const console::Input input = console::Read(console::PathOf(options.record), kRecordSizeLimit);
    if (!input.error.empty()) return console::Fail(app, input.error);
    record = input.bytes;
  }
  const packcheck::Report report = packcheck::Examine(list.bytes, record, options.product);
  if (!console::Print(app, options.json ? packcheck::AsJson(report) : packcheck::AsText(report)))
    return console::kFailed;
  return report.warnings.empty() ? console::kClean : console::kFound;
}

}  // namespace

int console::RunTool(const std::vector<std::string>& arguments) {
  CLI::App app("Says what every client will read in a list of updates, and what it will do.", "packcheck");
  app.footer("Exit status: 0 clean, 1 with warnings, 2 wrong use or a file that cannot be read.");
  Options options;
  std::string product;
  app.add_option("LIST", options.list, "The list of updates; - for standard input")->required();
  app.add_flag("--json", options.json, "Print one JSON object instead of text");
  app.add_option("--product", product, "Only for a client whose Qrt.exe has this version")
      ->type_name("A.B.C.D")
      ->check(CheckVersion);
  app.add_option("--record", options.record, "The client has this installedupdates.dat")->type_name("FILE");
  if (const auto status = Parse(app, arguments)) return *status;
  options.product = ParseVersion(product);
  if (options.record == "-" && options.list == "-")
    return Fail(app, "list and record cannot both be standard input");
  return Check(app, options);
}
