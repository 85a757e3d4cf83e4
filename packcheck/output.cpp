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

/// Of a longer list, a person reads the beginning.
constexpr std::size_t kNamesShown = 20;
/// Where the second column of the table begins, behind the longest version.
constexpr std::size_t kOutcomeColumn = 23;

Json Strings(const Texts& texts) {
  Json array = Json::array();
  for (const std::wstring& text : texts) array.push_back(console::Utf8(text));
  return array;
}

std::string Point(const Version& version) {
  std::string text;
  for (const auto number : version) text += (text.empty() ? "" : ".") + std::to_string(number);
  return text;
}

Json Object(const Client& client) {
  return {{"product", Point(client.product)},
          {"offered", client.offered},
          {"exit_code", client.exit_code},
          {"record_deleted", client.record_deleted},
          {"log", Strings(client.log)}};
}

std::string Line(std::string_view label, std::string_view value) {
  std::string line(label);
  line.resize(std::max<std::size_t>(line.size(), 10), ' ');
  return line.append(value) + "\n";
}

std::string Lines(std::string_view label, const Texts& names) {
  std::string text = Line(label, names.empty() ? "none" : std::to_string(names.size()));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i == kNamesShown) return text + "  ... and " + std::to_string(names.size() - i) + " more\n";
    text += "  " + console::Printable(names[i]) + "\n";
  }
  return text;
}

std::string LogOf(const Client& client) {
  std::string text;
  for (const std::wstring& entry : client.log) text += "  | " + console::Printable(entry) + "\n";
  return text;
}

std::string Outcome(const Client& client) {
  return std::string(client.offered ? "offered" : "not offered") + ", exit code " +
         std::to_string(client.exit_code) + (client.record_deleted ? ", the record is deleted" : "") + "\n";
}

/// One row for each version from which on something changes; then what is logged, once for those who are
/// offered updates and once for the others, since that is all that tells them apart.
std::string Table(const Report& report) {
  std::string text = "\nClient version         updates\n";
  for (const Client& client : report.table) {
    std::string row = "from " + Point(client.product);
    row.resize(kOutcomeColumn, ' ');
    text += row + Outcome(client);
  }
  if (report.table_cut) text += "... and many more changes; ask for one client with --product\n";
  for (const bool offered : {true, false}) {
    const auto client = std::find_if(report.table.begin(), report.table.end(),
                                     [&](const Client& row) { return row.offered == offered; });
    if (client == report.table.end()) continue;
    text +=
        std::string("\nLog where updates are ") + (offered ? "offered\n" : "not offered\n") + LogOf(*client);
  }
  return text;
}

}  // namespace

std::string AsText(const Report& report) {
  std::string text = Line("Heading", report.heading ? console::Printable(*report.heading) : "none");
  text += Lines("Packs", report.packs);
  if (!report.dropped.empty()) text += Lines("Not seen", report.dropped);
  text += Line("Newest", "level " + std::to_string(report.newest.level) + ", build " +
                             std::to_string(report.newest.build));
  if (report.client) {
    text += "\nClient " + Point(report.client->product) + ": updates are " + Outcome(*report.client) +
            LogOf(*report.client);
  } else {
    text += Table(report);
  }
  text += "\n";
  for (const Warning& warning : report.warnings) {
    text += std::string("warning ") + warning.code + ": " +
            (warning.name.empty() ? "" : console::Printable(warning.name) + ": ") + warning.text + "\n";
  }
  return text + (report.warnings.empty() ? "No warnings.\n" : "");
}

std::string AsJson(const Report& report) {
  Json json = {{"heading", nullptr},
               {"packs", Strings(report.packs)},
               {"dropped", Strings(report.dropped)},
               {"newest", {{"level", report.newest.level}, {"build", report.newest.build}}},
               {"client", nullptr},
               {"warnings", Json::array()}};
  if (report.heading) json["heading"] = console::Utf8(*report.heading);
  if (report.client) json["client"] = Object(*report.client);
  for (const Warning& warning : report.warnings) {
    json["warnings"].push_back(
        {{"code", warning.code}, {"name", console::Utf8(warning.name)}, {"text", warning.text}});
  }
  return console::JsonLine(json);
}

}  // namespace packcheck
