#include "packcheck/report.h"

#include <algorithm>
#include <set>
#include <utility>

#include "packcheck/warnings.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/decision.h"
#include "update/record_text.h"
#include "update/section_names.h"
#include "update/update_texts.h"

namespace packcheck {
namespace {

/// Numbers of a file version end here.
constexpr std::int64_t kNumbersEnd = 65536;
/// A table of more rows than this helps nobody.
constexpr std::size_t kTableRows = 40;

using LevelAndBuild = std::pair<std::int64_t, std::int64_t>;

/// What is the same for every client.
struct Published {
  std::vector<std::wstring> sections;
  LatestPack newest;
  std::optional<std::wstring> record;
};

Client Ask(const Published& published, const Version& product) {
  const auto& [first, second, third, fourth] = product;
  const std::wstring level = std::to_wstring(third), build = std::to_wstring(fourth);
  const Decision decision = Decide({published.sections, published.newest, published.record,
                                    text::FoldVersion(first, second, third, fourth), level, build},
                                   update_texts::kRecordDeleted);
  Client client{
      product, decision.offered.value_or(false), decision.exit_code, decision.removal.has_value(), {}};
  if (published.record)
    client.log = {std::wstring(update_texts::kRecordFound), std::wstring(update_texts::kRecordRead)};
  if (decision.removal) client.log.emplace_back(decision.removal->deleted);
  client.log.insert(client.log.end(), decision.entries.begin(), decision.entries.end());
  return client;
}

/// The product's own version, with these last numbers.
Version OfProduct(const LevelAndBuild& numbers) {
  const std::wstring_view major = identity::kProductVersion;
  const std::size_t point = major.find(L'.');
  const auto number = [](std::int64_t value) { return static_cast<std::uint16_t>(value); };
  return {number(text::ParseDecimal(major)), number(text::ParseDecimal(major.substr(point + 1))),
          number(numbers.first), number(numbers.second)};
}

/// Every level and build from which on a client may do something else than below it. Some are none, none is
/// missing up to as many as a table shows.
std::set<LevelAndBuild> Thresholds(const Published& published) {
  const std::int64_t newest = published.newest.level;
  std::set<LevelAndBuild> found{{0, 0}, {newest, 0}, {newest, published.newest.build}, {newest + 1, 0}};
  // A record's version is compared with the folded one, in which ten builds weigh as much as a level.
  const Version zero = OfProduct({0, 0});
  const std::int64_t ahead = std::int64_t{ParseRecordVersion(published.record.value_or(L"")).value_or(0)} -
                             text::FoldVersion(zero[0], zero[1], 0, 0);
  for (std::int64_t level = 0; level * 10 < ahead && level < kNumbersEnd; ++level) {
    found.insert({level, ahead - level * 10});
    found.insert({level + 1, 0});
  }
  std::erase_if(found, [](const LevelAndBuild& numbers) {
    return std::min(numbers.first, numbers.second) < 0 ||
           std::max(numbers.first, numbers.second) >= kNumbersEnd;
  });
  return found;
}

void FillTable(const Published& published, Report& report) {
  for (const LevelAndBuild& numbers : Thresholds(published)) {
    Client client = Ask(published, OfProduct(numbers));
    if (!report.table.empty() && report.table.back().log == client.log) continue;
    report.table_cut = report.table.size() == kTableRows;
    if (report.table_cut) return;
    report.table.push_back(std::move(client));
  }
}

}  // namespace

Report Examine(std::string_view list, std::optional<std::string_view> record,
               std::optional<Version> product) {
  Published published{ReadSectionNames(list), {}, {}};
  Report report;
  const std::size_t whole = CountWholeNames(published.sections, kSectionNamesCapacity);
  const auto first_lost = published.sections.begin() + static_cast<std::ptrdiff_t>(whole);
  report.dropped.assign(first_lost, published.sections.end());
  published.sections.erase(first_lost, published.sections.end());
  if (published.sections.size() > 1) FindLatestPack(published.sections, published.newest);
  if (record) published.record = WidenBytes(*record);

  if (whole != 0) {
    report.heading = published.sections.front();
    report.packs.assign(published.sections.begin() + 1, published.sections.end());
  }
  report.newest = published.newest;
  if (product) report.client = Ask(published, *product);
  if (!product) FillTable(published, report);
  AddWarnings(list, published.record, report);
  return report;
}

}  // namespace packcheck
