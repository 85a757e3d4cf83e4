#include "update/check_rules.h"

#include <algorithm>
#include <array>

#include "text/text.h"
#include "update/update_texts.h"
#include "version.h"

namespace {

// The exit codes that the log entries name.
constexpr int kWithRecord = 1;
constexpr int kEmptyRecordOrList = 2;
constexpr int kWithoutRecord = 3;

}  // namespace

std::optional<std::wstring_view> RequestPath(std::wstring_view address, std::wstring_view host) {
  const std::size_t found = address.find(host);
  if (found == std::wstring_view::npos) return std::nullopt;
  const std::size_t start = found + host.size() + 1;
  return start < address.size() ? address.substr(start) : std::wstring_view();
}

std::optional<PackFields> SplitPackName(std::wstring_view name) {
  const std::size_t last = name.rfind(L'_');
  if (last == std::wstring_view::npos) return std::nullopt;
  PackFields fields{.level = std::nullopt, .build = name.substr(last + 1)};
  const std::wstring_view before = name.substr(0, last);
  const std::size_t second_last = before.rfind(L'_');
  if (second_last != std::wstring_view::npos) fields.level = before.substr(second_last + 1);
  return fields;
}

void FindLatestPack(const std::vector<std::wstring>& sections, LatestPack& latest) {
  if (sections.size() == 2) {
    if (const auto only = SplitPackName(sections[1])) {
      latest.build = text::ParseDecimal(only->build);
      if (only->level) latest.level = text::ParseDecimal(*only->level);
    }
    return;
  }
  std::optional<LatestPack> best;
  std::int32_t level = 0;  // of the previous pack, used for a name without a level
  for (std::size_t i = 1; i < sections.size(); ++i) {
    const auto pack = SplitPackName(sections[i]);
    if (!pack) continue;
    if (pack->level) level = text::ParseDecimal(*pack->level);
    const std::int32_t build = text::ParseDecimal(pack->build);
    if (!best || IsNewer({.level = level, .build = build}, best->level, best->build))
      best = LatestPack{.level = level, .build = build};
  }
  if (best && best->level >= 1 && best->build >= 1) latest = *best;
}

bool IsNewer(const LatestPack& latest, std::int32_t installed_level, std::int32_t installed_build) {
  return installed_level < latest.level ||
         (installed_level == latest.level && installed_build < latest.build);
}

std::size_t CountRecordedPacks(const std::vector<std::wstring>& sections, std::wstring_view record) {
  std::size_t count = 0;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    if (record.find(sections[i]) != std::wstring_view::npos) ++count;
  }
  return count;
}

std::optional<std::int32_t> ParseRecordVersion(std::wstring_view record) {
  if (std::count(record.begin(), record.end(), L'_') != 3) return std::nullopt;
  constexpr std::wstring_view kProduct = L"" TAVREL_PRODUCT;
  std::size_t found = record.find(kProduct);
  if (found == std::wstring_view::npos) found = record.find(L"" TAVREL_PRODUCT_LOWER);
  if (found == std::wstring_view::npos) return std::nullopt;

  std::wstring_view rest = record.substr(found + kProduct.size());
  std::array<std::int32_t, 4> fields{};
  for (std::size_t i = fields.size() - 1; i > 0; --i) {
    const std::size_t underscore = rest.rfind(L'_');
    // An underscore before the product's name leaves fewer than three after it.
    if (underscore == std::wstring_view::npos) return std::nullopt;
    fields[i] = text::ParseDecimal(rest.substr(underscore + 1));
    rest = rest.substr(0, underscore);
  }
  fields[0] = text::ParseDecimal(rest);
  return text::FoldVersion(fields[0], fields[1], fields[2], fields[3]);
}

Decision Decide(const CheckFacts& facts) {
  const bool has_pack = facts.sections.size() > 1;
  const std::wstring_view record = text::Trim(facts.record.value_or(std::wstring_view()));
  Decision decision;
  decision.exit_code = !facts.record                 ? kWithoutRecord
                       : record.empty() || !has_pack ? kEmptyRecordOrList
                                                     : kWithRecord;
  const bool recorded = decision.exit_code == kWithRecord &&
                        CountRecordedPacks(facts.sections, record) + 1 == facts.sections.size();
  if (recorded) {
    decision.delete_record = facts.product_version < facts.record_version;
    decision.offered = decision.delete_record;
  } else if (has_pack) {
    if (facts.product_level.empty() || facts.product_build.empty()) return decision;
    decision.offered = IsNewer(facts.latest, text::ParseDecimal(facts.product_level),
                               text::ParseDecimal(facts.product_build));
  } else {
    decision.offered = false;
    if (!facts.record) decision.entries.push_back(update_texts::kRecordMissing);
  }
  const auto& details = *decision.offered ? update_texts::kDetailsFound : update_texts::kDetailsNotFound;
  decision.entries.push_back(details[static_cast<std::size_t>(decision.exit_code)]);
  if (has_pack && !*decision.offered) decision.entries.push_back(update_texts::kMatching);
  return decision;
}
