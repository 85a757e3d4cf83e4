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

static void to_json(Json& json, const Row& row) {
  json = {{"from", DottedText(row.from)}};
  json.update(Json(row.answer));
}

static void to_json(Json& json, const Client& client) {
  json = {{"product", DottedText(client.product)}};
  json.update(Json(client.answer));
  json["log"] = client.log;
}

static void to_json(Json& json, const Change& change) {
  json = {{"from", DottedText(change.from)},
          {"to", DottedText(change.to)},
          {"old", change.before},
          {"new", change.after}};
}

JSON_OF(Report, heading, packs, dropped, newest, client, table, warnings)
JSON_OF(Comparison, changes, warnings)

namespace {

using Texts = std::vector<std::wstring>;

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

/// The line in place of the entries, out of `count`, that are not shown; empty when all are shown.
std::string More(std::size_t count, std::size_t shown, const std::string& remedy) {
  return count <= shown ? "" : "  ... and " + std::to_string(count - shown) + " more" + remedy + "\n";
}

std::string Line(const std::string& label, const std::string& value) {
  return Padded(label, 10) + value + "\n";
}

std::string Lines(const std::string& label, const Texts& names) {
  std::string text = Line(label, names.empty() ? "none" : std::to_string(names.size()));
  for (std::size_t i = 0; i < std::min(names.size(), kNamesShown); ++i)
    text += "  " + Shortened(names[i]) + "\n";
  return text + More(names.size(), kNamesShown, "");
}

std::string Shown(const Answer& answer) {
  return std::string(answer.offered ? "offered" : "not offered") + ", exit code " +
         std::to_string(answer.exit_code) + (answer.record_deleted ? ", the record is deleted" : "");
}

std::string AnswerWithLog(const Client& client) {
  std::string text = "Client " + DottedText(client.product) + ": updates are " + Shown(client.answer) + "\n";
  for (const std::wstring& entry : client.log) text += "  | " + console::Printable(entry) + "\n";
  return text;
}

std::string Table(const std::vector<Row>& table) {
  std::string text = Padded("Client version", kAnswerColumn) + "updates\n";
  for (std::size_t i = 0; i < std::min(table.size(), kRowsShown); ++i) {
    text += Padded("from " + DottedText(table[i].from), kAnswerColumn) + Shown(table[i].answer) + "\n";
  }
  return text + More(table.size(), kRowsShown, "; --json shows all, --product one client");
}

std::string Warnings(const std::vector<Warning>& warnings) {
  if (warnings.empty()) return "No warnings.\n";
  std::string text;
  for (std::size_t i = 0; i < std::min(warnings.size(), kWarningsShown); ++i) {
    const std::string name = warnings[i].name.empty() ? "" : Shortened(warnings[i].name) + ": ";
    text += "warning " + warnings[i].code + ": " + name + warnings[i].text + "\n";
  }
  return text + More(warnings.size(), kWarningsShown, " warnings; --json shows all");
}

}  // namespace

std::string AsText(const Report& report) {
  std::string text = Line("Heading", report.heading ? Shortened(*report.heading) : "none");
  text += Lines("Packs", report.packs);
  if (!report.dropped.empty()) text += Lines("Not seen", report.dropped);
  text += Line("Newest", "level " + std::to_string(report.newest.level) + ", build " +
                             std::to_string(report.newest.build));
  text += "\n" + (report.client ? AnswerWithLog(*report.client) : Table(*report.table));
  return text + "\n" + Warnings(report.warnings);
}

std::string AsText(const Comparison& comparison) {
  const std::vector<Change>& changes = comparison.changes;
  std::string text = changes.empty() ? "No client gets another answer.\n"
                                     : Padded("Client versions", kChangeColumn) + "updates\n";
  for (std::size_t i = 0; i < std::min(changes.size(), kRowsShown); ++i) {
    const Change& change = changes[i];
    text += Padded(DottedText(change.from) + " to " + DottedText(change.to), kChangeColumn) +
            Shown(change.before) + " -> " + Shown(change.after) + "\n";
  }
  text += More(changes.size(), kRowsShown, "; --json shows all");
  const std::size_t count = comparison.warnings;
  return text + "\nThe new list has " +
         (count == 0 ? "no warnings.\n"
                     : std::to_string(count) + (count == 1 ? " warning" : " warnings") +
                           "; see them without --compare.\n");
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
