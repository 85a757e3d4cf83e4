#include "packcheck/warnings.h"

#include <algorithm>
#include <array>
#include <string>

#include "console/terminal.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/record_text.h"
#include "update/section_names.h"

namespace packcheck {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

enum Code {
  kNoSections,
  kOnlyHeading,
  kHeadingIsPack,
  kByteOrderMark,
  kUnclosed,
  kControlCharacter,
  kNotAscii,
  kBeyondLimit,
  kNoNumbers,
  kOutOfRange,
  kOtherProduct,
  kDuplicate,
  kNeverOffered,
  kOffersOlder,
  kRecordNeverAhead,
  kCodeCount,
};

struct Meaning {
  std::string code, text;
};

/// A list with more faults than this is not a list of updates.
constexpr std::size_t kMostLineWarnings = 1000;

/// The prefix of the name of each pack of this product: "Varnexa15_0_".
std::string PackPrefix() {
  std::wstring prefix = std::wstring(identity::kProductLabel) + L"_";
  text::ReplaceAll(prefix, L" ", L"");
  text::ReplaceAll(prefix, L".", L"_");
  return {prefix.begin(), prefix.end()};
}

/// In the order of Code.
const std::array<Meaning, kCodeCount>& Meanings() {
  // The last character of the clients' buffer is the null that ends the list of names.
  static const std::string limit = std::to_string(kSectionNamesCapacity - 1);
  static const std::array<Meaning, kCodeCount> meanings = {{
      {.code = "no-sections",
       .text = "clients find no section; begin with a heading in brackets, then the packs"},
      {.code = "only-heading", .text = "no pack follows the heading, so no client is offered anything"},
      {.code = "heading-is-pack",
       .text = "the first section is the heading, never a pack; put a heading before it"},
      {.code = "byte-order-mark",
       .text = "Windows does not find this section, because a UTF-8 byte order mark precedes it; save "
               "without the mark"},
      {.code = "unclosed", .text = "the line has no closing bracket, so clients find no section in it"},
      {.code = "control-character",
       .text = "it has a control, direction or invisible character, or is cut at a null; use ASCII"},
      {.code = "not-ascii", .text = "each client reads it, or its record, in its own code page; use ASCII"},
      {.code = "beyond-limit",
       .text = "clients read " + limit + " characters, one more for each name; it and the rest do not fit"},
      {.code = "no-numbers",
       .text = "its last two fields, between underscores, are not two numbers; name it ..._LEVEL_BUILD"},
      {.code = "out-of-range",
       .text = "a version's numbers are 0 to 65535, so clients are offered it for ever, or never"},
      {.code = "other-product",
       .text = "it does not begin with " + PackPrefix() + ", which clients do not check; correct the name"},
      {.code = "duplicate", .text = "the list has this name already; remove one of them"},
      {.code = "never-offered", .text = "the highest level and its build must be 1 or more"},
      {.code = "offers-older",
       .text = "with the record of this list it is offered updates, though no pack is newer, and loses the "
               "record; keep a single pack's build at 10 or below"},
      {.code = "record-never-ahead",
       .text = "clients read a version only from a record with three underscores and the product's "
               "name; this one never counts as ahead of an executable"},
  }};
  return meanings;
}

void Warn(Report& report, Code code, std::wstring_view name = {}) {
  const Meaning& meaning = Meanings()[code];
  report.warnings.push_back({.code = meaning.code, .name = std::wstring(name), .text = meaning.text});
}

/// Whether a field is a number and nothing else.
bool IsNumber(std::wstring_view field) {
  if (field.starts_with(L'-') || field.starts_with(L'+')) field.remove_prefix(1);
  return !field.empty() && field.find_first_not_of(L"0123456789") == field.npos;
}

bool IsOutOfRange(std::wstring_view field) {
  const std::int32_t value = text::ParseDecimal(field);
  return IsNumber(field) && (value < 0 || value > kLargestNumber);
}

/// Whether both of a pack's fields are numbers. Clients read them up to the first other character.
bool HasNumbers(std::wstring_view name) {
  const auto fields = SplitPackName(name);
  return fields && fields->level && IsNumber(*fields->level) && IsNumber(fields->build);
}

bool IsAscii(std::wstring_view name) {
  return std::all_of(name.begin(), name.end(), [](wchar_t c) { return c < 0x80; });
}

void WarnOfMark(std::string_view list, Report& report) {
  if (!list.starts_with(kUtf8Mark)) return;
  const std::string_view first_line =
      list.substr(kUtf8Mark.size(), list.find_first_of("\r\n") - kUtf8Mark.size());
  const auto names = ReadSectionNames(first_line);
  if (names.empty()) return;
  report.dropped.insert(report.dropped.begin(), names.front());
  Warn(report, kByteOrderMark, names.front());
}

/// Warns of faults that the names do not show: lines without a closing bracket, and control characters.
void WarnOfLines(std::string_view list, Report& report) {
  if (list.starts_with(kUtf8Mark)) list.remove_prefix(kUtf8Mark.size());
  for (const std::wstring& line : ReadHeadingLines(list)) {
    if (report.warnings.size() > kMostLineWarnings) return;
    const std::size_t end = line.rfind(L']');
    const std::wstring_view name = SectionNameIn(line);
    if (end == line.npos) {
      Warn(report, kUnclosed, line);
    } else if (line.find(L'\0') < end || std::any_of(name.begin(), name.end(), console::IsControl)) {
      Warn(report, kControlCharacter, name.empty() ? line : name);
    }
  }
}

void WarnOfWhole(const Published& published, Report& report) {
  if (!report.heading) return Warn(report, kNoSections);
  if (HasNumbers(*report.heading)) Warn(report, kHeadingIsPack, *report.heading);
  if (report.packs.empty()) return Warn(report, kOnlyHeading, *report.heading);
  if (!IsNewer(report.newest, 0, 0)) Warn(report, kNeverOffered);
  if (const auto client = FirstOfferedOlder(published)) {
    const std::string version = DottedText(*client);
    Warn(report, kOffersOlder, std::wstring(version.begin(), version.end()));
  }
}

void WarnOfPack(std::wstring_view name, const std::wstring& prefix, Report& report) {
  const bool has_prefix = name.starts_with(prefix);
  // Clients would read "Varnexa15_0_7" as level 0, build 7.
  const bool lacks_field = has_prefix && name.find(L'_', prefix.size()) == name.npos;
  if (lacks_field || !HasNumbers(name)) Warn(report, kNoNumbers, name);
  const auto fields = SplitPackName(name);
  if (fields && (IsOutOfRange(fields->level.value_or(L"")) || IsOutOfRange(fields->build)))
    Warn(report, kOutOfRange, name);
  if (!has_prefix) Warn(report, kOtherProduct, name);
}

void WarnOfNames(const std::vector<std::wstring>& sections, Report& report) {
  const std::string prefix = PackPrefix();
  for (auto name = sections.begin(); name != sections.end(); ++name) {
    if (name != sections.begin()) WarnOfPack(*name, std::wstring(prefix.begin(), prefix.end()), report);
    if (!IsAscii(*name)) Warn(report, kNotAscii, *name);
    const auto is_same = [&](const auto& other) { return text::EqualsIgnoreCase(other, *name); };
    if (std::any_of(sections.begin(), name, is_same)) Warn(report, kDuplicate, *name);
  }
}

}  // namespace

void AddWarnings(std::string_view list, const Published& published, Report& report) {
  if (!report.dropped.empty()) Warn(report, kBeyondLimit, report.dropped.front());
  WarnOfMark(list, report);
  WarnOfLines(list, report);
  WarnOfWhole(published, report);
  WarnOfNames(published.sections, report);
  const std::wstring record = published.record.value_or(L"");
  if (!text::Trim(record).empty() && !ParseRecordVersion(record)) Warn(report, kRecordNeverAhead);
}

const std::vector<std::string>& WarningCodes() {
  static const std::vector<std::string> codes = [] {
    std::vector<std::string> all;
    for (const Meaning& meaning : Meanings()) all.emplace_back(meaning.code);
    return all;
  }();
  return codes;
}

}  // namespace packcheck
