#include "packcheck/output.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace packcheck {
namespace {

using Texts = std::vector<std::wstring>;

/// Of a longer list, a person reads the beginning.
constexpr std::size_t kNamesShown = 20;
/// Where the second column of the table begins, behind the longest version.
constexpr std::size_t kOutcomeColumn = 23;

std::string Hex(const char* format, char32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, format, static_cast<unsigned>(value));
  return text;
}

void AppendUtf8(char32_t c, std::string& result) {
  const auto tail = [&](int shift) { result += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) {
    result += static_cast<char>(c);
  } else if (c < 0x800) {
    result += static_cast<char>(0xC0 | c >> 6);
    tail(0);
  } else if (c < 0x10000) {
    result += static_cast<char>(0xE0 | c >> 12);
    tail(6);
    tail(0);
  } else {
    result += static_cast<char>(0xF0 | c >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

/// A name in UTF-8, control characters included.
std::string Utf8(std::wstring_view name) {
  std::string result;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char32_t c = static_cast<char32_t>(name[i]) & 0xFFFF;
    const char32_t next = i + 1 < name.size() ? static_cast<char32_t>(name[i + 1]) & 0xFFFF : 0;
    if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
      AppendUtf8(0x10000 + ((c & 0x3FF) << 10) + (next & 0x3FF), result);
      ++i;
    } else if (c >= 0xDC80 && c <= 0xDCFF) {
      result += Hex("\\x%02X", c & 0xFF);
    } else {
      AppendUtf8(c >= 0xD800 && c < 0xE000 ? 0xFFFD : c, result);
    }
  }
  return result;
}

/// A name on a person's screen, which must not take orders from it.
std::string Shown(std::wstring_view name) {
  std::string result;
  for (const char c : Utf8(name)) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    result += control ? Hex("\\x%02X", static_cast<unsigned char>(c)) : std::string(1, c);
  }
  return result;
}

std::string Quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += static_cast<unsigned char>(c) < 0x20 ? Hex("\\u%04X", static_cast<unsigned char>(c))
                                                   : std::string(1, c);
  }
  return result + '"';
}

std::string Quoted(std::wstring_view name) {
  return Quoted(Utf8(name));
}

template <class Values, class Write>
std::string Array(const Values& values, Write write) {
  std::string result;
  for (const auto& value : values) result += (result.empty() ? "" : ",") + write(value);
  return "[" + result + "]";
}

std::string Array(const Texts& texts) {
  return Array(texts, [](const std::wstring& text) { return Quoted(text); });
}

std::string Point(const Version& version) {
  std::string text;
  for (const auto number : version) text += (text.empty() ? "" : ".") + std::to_string(number);
  return text;
}

std::string Object(const Client& client) {
  const auto boolean = [](bool value) { return value ? "true" : "false"; };
  return "{\"product\":\"" + Point(client.product) + "\",\"offered\":" + boolean(client.offered) +
         ",\"exit_code\":" + std::to_string(client.exit_code) +
         ",\"record_deleted\":" + boolean(client.record_deleted) + ",\"log\":" + Array(client.log) + "}";
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
    text += "  " + Shown(names[i]) + "\n";
  }
  return text;
}

std::string LogOf(const Client& client) {
  std::string text;
  for (const std::wstring& entry : client.log) text += "  | " + Shown(entry) + "\n";
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
  std::string text = Line("Heading", report.heading ? Shown(*report.heading) : "none");
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
            (warning.name.empty() ? "" : Shown(warning.name) + ": ") + warning.text + "\n";
  }
  return text + (report.warnings.empty() ? "No warnings.\n" : "");
}

std::string AsJson(const Report& report) {
  return "{\"heading\":" + (report.heading ? Quoted(*report.heading) : "null") +
         ",\"packs\":" + Array(report.packs) + ",\"dropped\":" + Array(report.dropped) +
         ",\"newest\":{\"level\":" + std::to_string(report.newest.level) +
         ",\"build\":" + std::to_string(report.newest.build) +
         "},\"client\":" + (report.client ? Object(*report.client) : "null") + ",\"warnings\":" +
         Array(report.warnings,
               [](const Warning& warning) {
                 return std::string("{\"code\":\"") + warning.code + "\",\"name\":" + Quoted(warning.name) +
                        ",\"text\":" + Quoted(std::string_view(warning.text)) + "}";
               }) +
         "}\n";
}

}  // namespace packcheck
