#include <algorithm>
#include <array>
#include <map>
#include <span>

#include "console/text.h"
#include "packcheck/clients.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/check_rules.h"
#include "update/section_names.h"

namespace packcheck {
namespace {

/// A list with more faults than this is not a list of updates.
constexpr std::size_t kMostLineWarnings = 1000;

/// The beginning of the name of each pack of this product: "Varnexa15_0_".
std::wstring PackPrefix() {
  std::wstring prefix = std::wstring(identity::kProductLabel) + L"_";
  text::ReplaceAll(prefix, L" ", L"");
  text::ReplaceAll(prefix, L".", L"_");
  return prefix;
}

const std::map<std::string, std::string>& Meanings() {
  // The last character of the clients' buffer is the null that ends the list of names.
  static const std::string limit =
      "clients read " + std::to_string(kSectionNamesCapacity - 1) + " characters, one more for each name; ";
  static const std::string prefix = console::Utf8(PackPrefix());
  static const std::map<std::string, std::string> meanings = {
      {"not-a-list", "the file looks like this, not like a list; publish the list itself, as plain text"},
      {"utf-16",
       "the file is UTF-16, which no client on Windows has been tried with; save it as plain ASCII"},
      {"carriage-return",
       "a line ends with CR alone, which no client on Windows has been tried with; use CR LF or LF"},
      {"merge-conflict", "a merge has left its marks; clients read both sides"},
      {"no-sections", "clients find no section; begin with a heading in brackets, then the packs"},
      {"only-heading", "no pack follows the heading, so no client is offered anything"},
      {"heading-is-pack", "the first section is the heading, never a pack; put a heading before it"},
      {"byte-order-mark",
       "Windows does not find this section, because a UTF-8 byte order mark precedes it; save without the "
       "mark"},
      {"unclosed", "the line has no closing bracket, so clients find no section in it"},
      {"empty-name", "the section has no name; no client on Windows has been tried with one; remove it"},
      {"control-character",
       "it has a control, direction or invisible character, or is cut at a null; use ASCII"},
      {"not-ascii", "each client reads it, or its record, in its own code page; use ASCII"},
      {"beyond-limit", limit + "it and the rest do not fit"},
      {"newest-beyond-limit",
       limit + "the newest pack does not fit, so it reaches nobody; put it directly after the heading"},
      {"no-numbers",
       "its last two fields, between underscores, are not two numbers; name it ..._LEVEL_BUILD"},
      {"extra-number",
       "more than two numbers follow " + prefix + "; clients take the last two for level and build"},
      {"number-form",
       "a number has a sign or a leading zero, so a record with the plain number does not name it"},
      {"out-of-range", "a version's numbers are 0 to 65535, so clients are offered it for ever, or never"},
      {"prefix-case",
       "it begins with " + prefix + " in another case, so a record in the usual case does not name it"},
      {"other-product",
       "it does not begin with " + prefix + ", which clients do not check; correct the name"},
      {"duplicate", "the list has this name already; remove one of them"},
      {"never-offered", "the highest level and its build must be 1 or more"},
      {"offers-older",
       "a record of one name covers this list, and its build counts like levels: this client is offered "
       "updates, though no pack is newer, and loses the record; keep builds at 10 or below"},
      {"record-never-ahead",
       "clients read a version only from a record with three underscores and the product's name; this one "
       "never counts as ahead of an executable"},
  };
  return meanings;
}

using Warnings = std::vector<Warning>;

void Warn(Warnings& warnings, const std::string& code, std::wstring_view name = {}) {
  warnings.push_back({.code = code, .name = std::wstring(name), .text = Meanings().at(code)});
}

/// What the bytes are when they are no text of one byte a character; empty otherwise.
std::wstring_view KindOf(std::string_view list) {
  const std::size_t start = std::min(list.find_first_not_of(" \t\r\n"), list.size());
  const std::wstring first = WidenBytes(list.substr(start, 9));
  if (list.starts_with("\x1F\x8B")) return L"gzip";
  if (text::EqualsIgnoreCase(first, L"<!DOCTYPE") || text::EqualsIgnoreCase(first.substr(0, 5), L"<html"))
    return L"HTML";
  if (list.size() > 1 && (list[0] == '\0') != (list[1] == '\0')) return L"UTF-16 without a byte order mark";
  return {};
}

/// Whether a field is a number and nothing else.
bool IsNumber(std::wstring_view field) {
  if (field.starts_with(L'-') || field.starts_with(L'+')) field.remove_prefix(1);
  return !field.empty() && field.find_first_not_of(L"0123456789") == field.npos;
}

bool IsInRange(std::wstring_view number) {
  return IsVersionNumber(text::ParseDecimal(number));
}

/// Whether a number has neither a sign nor a leading zero.
bool IsPlain(std::wstring_view number) {
  return std::to_wstring(text::ParseDecimal(number)) == number;
}

/// A pack's level and build, if both are numbers. Clients read them up to the first other character.
std::optional<std::array<std::wstring_view, 2>> NumbersIn(std::wstring_view name) {
  const auto fields = SplitPackName(name);
  if (!fields || !fields->level) return std::nullopt;
  const std::array<std::wstring_view, 2> numbers{*fields->level, fields->build};
  if (!IsNumber(numbers[0]) || !IsNumber(numbers[1])) return std::nullopt;
  return numbers;
}

/// Warns of what the names do not show.
void WarnOfLines(std::string_view list, const Published& published, Warnings& warnings) {
  if (list.starts_with("\xFF\xFE") || list.starts_with("\xFE\xFF")) Warn(warnings, "utf-16");
  std::wstring text = L"\n" + console::DecodeText(list) + L"\n";
  text::ReplaceAll(text, L"\r\n", L"\n");
  if (text.find(L'\r') != text.npos) Warn(warnings, "carriage-return");
  const std::size_t conflict = text.find(L"\n<<<<<<< ");
  if (conflict != text.npos)
    Warn(warnings, "merge-conflict",
         text.substr(conflict + 1, text.find_first_of(L"\r\n", conflict + 1) - conflict - 1));
  if (published.hidden) Warn(warnings, "byte-order-mark", *published.hidden);
  if (list.starts_with(kUtf8Mark)) list.remove_prefix(kUtf8Mark.size());
  for (const std::wstring& line : ReadHeadingLines(list)) {
    if (warnings.size() > kMostLineWarnings) return;
    const std::size_t end = line.rfind(L']');
    const std::wstring_view name = SectionNameIn(line);
    if (end == line.npos) {
      Warn(warnings, "unclosed", line);
    } else if (line.find(L'\0') < end || std::any_of(name.begin(), name.end(), console::IsControl)) {
      Warn(warnings, "control-character", name.empty() ? line : name);
    } else if (name.empty()) {
      Warn(warnings, "empty-name", line);
    }
  }
}

/// The newest of the packs that are newer than `newest`, which then gets its level and build; null when none
/// is. Each pack is read as if it were the only one of its list.
const std::wstring* FindNewer(std::span<const std::wstring> packs, LatestPack& newest) {
  const std::wstring* found = nullptr;
  for (const std::wstring& name : packs) {
    LatestPack pack;
    FindLatestPack({L"", name}, pack);
    if (!IsNewer(pack, newest.level, newest.build)) continue;
    newest = pack;
    found = &name;
  }
  return found;
}

/// The shortest record that names every pack. A name that is part of another one needs no entry.
std::wstring RecordOf(std::vector<std::wstring> sections) {
  std::stable_sort(sections.begin() + 1, sections.end(),
                   [](const auto& left, const auto& right) { return left.size() > right.size(); });
  std::wstring record;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    if (record.find(sections[i]) == record.npos) record.append(sections[i]).append(L"\r\n");
  }
  return record;
}

/// The first version of a client that is offered updates although its record names every pack of the list and
/// no pack is newer. The cause is the record's version, in which a build of 10 counts like a level.
std::optional<Version> FirstOfferedOlder(const Published& published) {
  Published recorded = published;
  recorded.record = RecordOf(published.sections);
  // This record covers the list, so only its version can cause an offer.
  if (!ParseRecordVersion(*recorded.record)) return std::nullopt;
  FindNewer(std::span(published.sections).subspan(1), recorded.newest);
  for (const Version& version : Thresholds(recorded)) {
    if (!IsNewer(recorded.newest, version[2], version[3]) && AskClient(recorded, version).offered)
      return version;
  }
  return std::nullopt;
}

void WarnOfLost(const Published& published, Warnings& warnings) {
  if (published.lost.empty()) return;
  LatestPack newest = published.newest;
  const std::wstring* missed = FindNewer(published.lost, newest);
  if (missed == nullptr) return Warn(warnings, "beyond-limit", published.lost.front());
  Warn(warnings, "newest-beyond-limit", *missed);
}

void WarnOfWhole(const Published& published, Warnings& warnings) {
  const std::vector<std::wstring>& sections = published.sections;
  if (sections.empty()) return Warn(warnings, "no-sections");
  if (NumbersIn(sections.front())) Warn(warnings, "heading-is-pack", sections.front());
  if (sections.size() == 1) return Warn(warnings, "only-heading", sections.front());
  if (!IsNewer(published.newest, 0, 0)) Warn(warnings, "never-offered");
  if (const auto client = FirstOfferedOlder(published))
    Warn(warnings, "offers-older", console::DecodeText(DottedText(*client)));
}

void WarnOfPack(std::wstring_view name, Warnings& warnings) {
  static const std::wstring prefix = PackPrefix();
  const std::wstring_view beginning = name.substr(0, prefix.size()), rest = name.substr(beginning.size());
  const bool has_prefix = text::EqualsIgnoreCase(beginning, prefix);
  const auto underscores = has_prefix ? std::count(rest.begin(), rest.end(), L'_') : 1;
  const auto numbers = NumbersIn(name);
  // Clients would read "Varnexa15_0_7" as level 0, build 7.
  if (underscores == 0 || !numbers) {
    Warn(warnings, "no-numbers", name);
  } else if (!std::all_of(numbers->begin(), numbers->end(), IsInRange)) {
    Warn(warnings, "out-of-range", name);
  } else if (!std::all_of(numbers->begin(), numbers->end(), IsPlain)) {
    Warn(warnings, "number-form", name);
  }
  if (underscores > 1) Warn(warnings, "extra-number", name);
  if (beginning != prefix) Warn(warnings, has_prefix ? "prefix-case" : "other-product", name);
}

void WarnOfNames(const std::vector<std::wstring>& sections, Warnings& warnings) {
  for (auto name = sections.begin(); name != sections.end(); ++name) {
    if (name != sections.begin()) WarnOfPack(*name, warnings);
    if (std::any_of(name->begin(), name->end(), [](wchar_t c) { return c >= 0x80; }))
      Warn(warnings, "not-ascii", *name);
    const auto is_same = [&](const auto& other) { return text::EqualsIgnoreCase(other, *name); };
    if (std::any_of(sections.begin(), name, is_same)) Warn(warnings, "duplicate", *name);
  }
}

}  // namespace

std::vector<Warning> FindWarnings(std::string_view list, const Published& published) {
  Warnings warnings;
  if (const std::wstring_view kind = KindOf(list); !kind.empty()) {
    Warn(warnings, "not-a-list", kind);
    return warnings;
  }
  WarnOfLost(published, warnings);
  WarnOfLines(list, published, warnings);
  WarnOfWhole(published, warnings);
  WarnOfNames(published.sections, warnings);
  const std::wstring record = published.record.value_or(L"");
  if (!text::Trim(record).empty() && !ParseRecordVersion(record)) Warn(warnings, "record-never-ahead");
  return warnings;
}

std::vector<std::string> WarningCodes() {
  std::vector<std::string> codes;
  for (const auto& meaning : Meanings()) codes.push_back(meaning.first);
  return codes;
}

}  // namespace packcheck
