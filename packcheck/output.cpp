#include "packcheck/output.h"

#include <algorithm>
#include <string_view>

#include "console/encoding.h"
#include "console/json.h"
#include "console/terminal.h"

namespace packcheck {
namespace {

using console::Json;
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

std::string Answer(const ClientAnswer& client) {
  return std::string(client.offered ? "offered" : "not offered") + ", exit code " +
         std::to_string(client.exit_code) + (client.record_deleted ? ", the record is deleted" : "");
}

std::string AnswerWithLog(const ClientAnswer& client) {
  std::string text = "Client " + DottedText(client.product) + ": updates are " + Answer(client) + "\n";
  for (const std::wstring& entry : client.log) text += "  | " + console::Printable(entry) + "\n";
  return text;
}

std::string Table(const std::vector<ClientAnswer>& table) {
  std::string text = Padded("Client version", kAnswerColumn) + "updates\n";
  for (std::size_t i = 0; i < std::min(table.size(), kRowsShown); ++i) {
    text += Padded("from " + DottedText(table[i].product), kAnswerColumn) + Answer(table[i]) + "\n";
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

Json Strings(const Texts& texts) {
  Json array = Json::array();
  for (const std::wstring& text : texts) array.push_back(console::Utf8(text));
  return array;
}

Json AnswerObject(const ClientAnswer& client) {
  return {{"offered", client.offered},
          {"exit_code", client.exit_code},
          {"record_deleted", client.record_deleted}};
}

/// The answer after a first member, "product" or "from", with the client's version.
Json ClientObject(const char* version_key, const ClientAnswer& client) {
  Json object = {{version_key, DottedText(client.product)}};
  object.update(AnswerObject(client));
  return object;
}

}  // namespace

std::string AsText(const Report& report) {
  std::string text = Line("Heading", report.heading ? Shortened(*report.heading) : "none");
  text += Lines("Packs", report.packs);
  if (!report.dropped.empty()) text += Lines("Not seen", report.dropped);
  text += Line("Newest", "level " + std::to_string(report.newest.level) + ", build " +
                             std::to_string(report.newest.build));
  text += "\n" + (report.client ? AnswerWithLog(*report.client) : Table(report.table));
  return text + "\n" + Warnings(report.warnings);
}

std::string AsText(const std::vector<Change>& changes) {
  if (changes.empty()) return "No client gets another answer.\n";
  std::string text = Padded("Client versions", kChangeColumn) + "updates\n";
  for (std::size_t i = 0; i < std::min(changes.size(), kRowsShown); ++i) {
    const Change& change = changes[i];
    text += Padded(DottedText(change.from) + " to " + DottedText(change.to), kChangeColumn) +
            Answer(change.before) + " -> " + Answer(change.after) + "\n";
  }
  return text + More(changes.size(), kRowsShown, "; --json shows all");
}

std::string AsJson(const Report& report, const std::string& file) {
  Json json = Json::object();
  if (!file.empty()) json["file"] = console::Utf8(console::DecodeText(file));
  json["heading"] = nullptr;
  if (report.heading) json["heading"] = console::Utf8(*report.heading);
  json["packs"] = Strings(report.packs);
  json["dropped"] = Strings(report.dropped);
  json["newest"] = {{"level", report.newest.level}, {"build", report.newest.build}};
  json["client"] = nullptr;
  json["table"] = nullptr;
  if (report.client) {
    json["client"] = ClientObject("product", *report.client);
    json["client"]["log"] = Strings(report.client->log);
  } else {
    json["table"] = Json::array();
    for (const ClientAnswer& client : report.table) json["table"].push_back(ClientObject("from", client));
  }
  json["warnings"] = Json::array();
  for (const Warning& warning : report.warnings) {
    json["warnings"].push_back(
        {{"code", warning.code}, {"name", console::Utf8(warning.name)}, {"text", warning.text}});
  }
  return console::JsonLine(json);
}

std::string AsJson(const std::vector<Change>& changes) {
  Json array = Json::array();
  for (const Change& change : changes) {
    array.push_back({{"from", DottedText(change.from)},
                     {"to", DottedText(change.to)},
                     {"old", AnswerObject(change.before)},
                     {"new", AnswerObject(change.after)}});
  }
  return console::JsonLine({{"changes", array}});
}

}  // namespace packcheck
