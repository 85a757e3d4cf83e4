#include "packcheck/warnings.h"

#include <algorithm>
#include <limits>

#include "text/text.h"
#include "update/record_text.h"
#include "update/section_names.h"

namespace packcheck {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// A field that holds a number and nothing else.
bool IsNumber(std::wstring_view field) {
  if (field.starts_with(L'-') || field.starts_with(L'+')) field.remove_prefix(1);
  return !field.empty() && field.find_first_not_of(L"0123456789") == field.npos;
}

bool IsOutOfRange(std::wstring_view field) {
  if (!IsNumber(field)) return false;
  const std::int32_t value = text::ParseDecimal(field);
  if (value != std::numeric_limits<std::int32_t>::max() &&
      value != std::numeric_limits<std::int32_t>::min()) {
    return false;
  }
  std::wstring_view digits = field.substr(field.find_first_of(L"123456789"));
  return digits != L"2147483647" && !(field.starts_with(L'-') && digits == L"2147483648");
}

// Whether both of a pack's fields, which a client reads as far as they go, are numbers.
bool HasNumbers(std::wstring_view name) {
  const auto fields = SplitPackName(name);
  return fields && fields->level && IsNumber(*fields->level) && IsNumber(fields->build);
}

bool IsAscii(std::wstring_view name) {
  return std::all_of(name.begin(), name.end(), [](wchar_t c) { return c < 0x80; });
}

void WarnOfMark(std::string_view list, Report& report) {
  if (!list.starts_with(kUtf8Mark)) return;
  const std::string_view line = list.substr(kUtf8Mark.size(), list.find_first_of("\r\n") - kUtf8Mark.size());
  const auto names = ReadSectionNames(line);
  const std::wstring lost = names.empty() ? std::wstring() : names.front();
  if (!lost.empty()) report.dropped.insert(report.dropped.begin(), lost);
  report.warnings.push_back(
      {"byte-order-mark", lost,
       "a UTF-8 mark stands before the first line, and Windows then finds no section in "
       "that line; save the list without a mark"});
}

void WarnOfPack(std::wstring_view name, Report& report) {
  const auto warn = [&](const char* code, const char* text) {
    report.warnings.push_back({code, std::wstring(name), text});
  };
  if (!HasNumbers(name)) {
    warn("no-numbers",
         "its last two fields, between underscores, are not two numbers; name it as ..._LEVEL_BUILD");
  }
  const auto fields = SplitPackName(name);
  if (fields && (IsOutOfRange(fields->level.value_or(L"")) || IsOutOfRange(fields->build))) {
    warn("out-of-range", "a number in it does not fit 32 bits, and clients take the nearest one that does");
  }
}

void WarnOfNames(Report& report) {
  std::vector<std::wstring> names = report.packs;
  names.insert(names.begin(), report.heading.value_or(L""));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) WarnOfPack(names[i], report);
    if (!IsAscii(names[i])) {
      report.warnings.push_back(
          {"not-ascii", names[i],
           "each client reads it, or its record, in a code page of its own; keep to ASCII"});
    }
    const auto before = names.begin() + static_cast<std::ptrdiff_t>(i);
    if (std::any_of(names.begin(), before,
                    [&](const auto& other) { return text::EqualsIgnoreCase(other, names[i]); })) {
      report.warnings.push_back(
          {"duplicate", names[i], "the name stands in the list before; remove one of them"});
    }
  }
}

void WarnOfWhole(Report& report) {
  const auto warn = [&](const char* code, const std::wstring& name, const char* text) {
    report.warnings.push_back({code, name, text});
  };
  if (!report.heading) {
    warn("no-sections", L"",
         "clients find no section at all; begin with a heading in brackets, then the packs");
    return;
  }
  if (HasNumbers(*report.heading)) {
    warn("heading-is-pack", *report.heading,
         "the first section is the heading and never a pack, though it is named like one; put a heading "
         "before it");
  }
  if (report.packs.empty()) {
    warn("only-heading", *report.heading,
         "no pack stands behind the heading, so no client is offered anything");
  } else if (!IsNewer(report.newest, 0, 0)) {
    warn("never-offered", L"",
         "no client is older than what it holds as the newest; of several packs, the best level and its "
         "build must "
         "be 1 or more");
  }
}

}  // namespace

void AddWarnings(std::string_view list, const std::optional<std::wstring>& record, Report& report) {
  if (!report.dropped.empty()) {
    report.warnings.push_back(
        {"beyond-limit", report.dropped.front(),
         "it and what follows stand behind the 1024 characters of names that clients read; "
         "put the newest packs first, or remove old ones"});
  }
  WarnOfMark(list, report);
  WarnOfWhole(report);
  WarnOfNames(report);
  if (record && !text::Trim(*record).empty() && !ParseRecordVersion(*record)) {
    report.warnings.push_back(
        {"record-never-ahead", L"",
         "a version is read from a record with exactly three underscores and the product's name; "
         "this one never counts as ahead of an executable and is never deleted"});
  }
}

}  // namespace packcheck
