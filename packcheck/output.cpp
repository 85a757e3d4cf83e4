#include "packcheck/output.h"

#include <algorithm>
#include <string_view>

#include "console/json.h"
#include "console/text.h"

JSON_OF(LatestPack, level, build)

namespace packcheck {

using console::Json;

JSON_OF(Answer, offered, exit_code, record_deleted)
JSON_OF(Warning, code, name, text)

JSON_OF(Row, from, offered, exit_code, record_deleted)
JSON_OF(Client, product, offered, exit_code, record_deleted, log)

static void to_json(Json& json, const Change& change) {
  json = {{"from", change.from}, {"to", change.to}, {"old", change.before}, {"new", change.after}};
}

JSON_OF(Report, heading, packs, dropped, newest, client, table, warnings)
JSON_OF(Comparison, changes, warnings)

namespace {

// With these bounds a report is at most 33 lines long.
constexpr std::size_t kNamesShown = 5;
constexpr std::size_t kRowsShown = 6;
constexpr std::size_t kWarningsShown = 6;
/// Longest part of a name that is shown, in UTF-16 code units.
constexpr std::size_t kNameLength = 60;
/// Start of the second column of a table: after the longest version, and after a range of two versions.
constexpr std::size_t kAnswerColumn = 23;
constexpr std::size_t kChangeColumn = 40;

std::string Padded(std::string text, std::size_t column) {
  text.resize(std::max(text.size() + 1, column), ' ');
  return text;
}

std::string Shortened(const std::wstring& name) {
  if (name.size() <= kNameLength) return console::Printable(name);
  return console::Printable(std::wstring_view(name).substr(0, kNameLength)) + "...";
}

/// The first entries, at most `most`, each as a line, and a line that counts the rest.
template <class Entry>
std::string First(std::size_t most, const std::vector<Entry>& entries, const std::string& remedy, auto line) {
  std::string text;
  for (std::size_t i = 0; i < std::min(entries.size(), most); ++i) text += line(entries[i]) + "\n";
  if (entries.size() <= most) return text;
  return text + "  ... and " + std::to_string(entries.size() - most) + " more" + remedy + "\n";
}

std::string Line(const std::string& label, const std::string& value) {
  return Padded(label, 10) + value + "\n";
}

std::string Names(const std::string& label, const std::vector<std::wstring>& names) {
  return Line(label, names.empty() ? "none" : std::to_string(names.size())) +
         First(kNamesShown, names, "", [](const std::wstring& name) { return "  " + Shortened(name); });
}

std::string Shown(const Answer& answer) {
  return std::string(answer.offered ? "offered" : "not offered") + ", exit code " +
         std::to_string(answer.exit_code) + (answer.record_deleted ? ", the record is deleted" : "");
}

std::string AnswerWithLog(const Client& client) {
  std::string text = "Client " + client.product + ": updates are " + Shown(client) + "\n";
  for (const std::wstring& entry : client.log) text += "  | " + console::Printable(entry) + "\n";
  return text;
}

std::string Table(const std::vector<Row>& table) {
  return Padded("Client version", kAnswerColumn) + "updates\n" +
         First(kRowsShown, table, "; --json shows all, --product one client",
               [](const Row& row) { return Padded("from " + row.from, kAnswerColumn) + Shown(row); });
}

std::string Warnings(const std::vector<Warning>& warnings) {
  if (warnings.empty()) return "No warnings.\n";
  return First(kWarningsShown, warnings, " warnings; --json shows all", [](const Warning& warning) {
    const std::string name = warning.name.empty() ? "" : Shortened(warning.name) + ": ";
    return "warning " + warning.code + ": " + name + warning.text;
  });
}

}  // namespace

std::string AsText(const Report& report) {
  std::string text = Line("Heading", report.heading ? Shortened(*report.heading) : "none");
  text += Names("Packs", report.packs);
  if (!report.dropped.empty()) text += Names("Not seen", report.dropped);
  text += Line("Newest", "level " + std::to_string(report.newest.level) + ", build " +
                             std::to_string(report.newest.build));
  text += "\n";
  if (report.client) text += AnswerWithLog(*report.client);
  if (report.table) text += Table(*report.table);
  return text + "\n" + Warnings(report.warnings);
}

std::string AsText(const Comparison& comparison) {
  const std::size_t count = comparison.warnings;
  return (comparison.changes.empty() ? "No client gets another answer.\n"
                                     : Padded("Client versions", kChangeColumn) + "updates\n") +
         First(kRowsShown, comparison.changes, "; --json shows all",
               [](const Change& change) {
                 return Padded(change.from + " to " + change.to, kChangeColumn) + Shown(change.before) +
                        " -> " + Shown(change.after);
               }) +
         "\nThe new list has " + (count == 0 ? "no" : std::to_string(count)) + " warning" +
         (count == 1 ? "" : "s") + (count == 0 ? ".\n" : "; see them without --compare.\n");
}

std::string AsJson(const Report& report, const std::string& file) {
  Json json = Json::object();
  if (!file.empty()) json["file"] = console::DecodeText(file);
  json.update(Json(report));
  return console::JsonLine(json);
}

std::string AsJson(const Comparison& comparison) {
  return console::JsonLine(comparison);
}

}  // namespace packcheck
