#include "packcheck/report.h"

#include <iterator>
#include <set>

#include "packcheck/clients.h"

namespace packcheck {
namespace {

std::vector<Row> Table(const Published& published) {
  std::vector<Row> table;
  for (const LevelAndBuild& numbers : Thresholds(published)) {
    const Client client = AskClient(published, VersionOf(numbers));
    if (table.empty() || table.back().answer != client.answer)
      table.push_back({.from = client.product, .answer = client.answer});
  }
  return table;
}

LevelAndBuild Predecessor(const LevelAndBuild& numbers) {
  if (numbers.second > 0) return {numbers.first, numbers.second - 1};
  return {numbers.first - 1, kLargestNumber};
}

}  // namespace

Report Examine(std::string_view list, std::optional<std::string_view> record,
               std::optional<Version> product) {
  const Published published = ReadPublished(list, record);
  Report report;
  if (!published.sections.empty()) {
    report.heading = published.sections.front();
    report.packs.assign(published.sections.begin() + 1, published.sections.end());
  }
  report.dropped = published.lost;
  if (published.hidden) report.dropped.insert(report.dropped.begin(), *published.hidden);
  report.newest = published.newest;
  if (product) {
    report.client = AskClient(published, *product);
  } else {
    report.table = Table(published);
  }
  report.warnings = FindWarnings(list, published);
  return report;
}

Comparison Compare(std::string_view before, std::string_view after, std::optional<std::string_view> record) {
  const Published old_list = ReadPublished(before, record), new_list = ReadPublished(after, record);
  std::set<LevelAndBuild> thresholds = Thresholds(old_list);
  thresholds.merge(Thresholds(new_list));
  Comparison comparison{.changes = {}, .warnings = FindWarnings(after, new_list).size()};
  std::vector<Change>& changes = comparison.changes;
  bool continues = false;  // the last change reaches up to this threshold
  for (auto i = thresholds.begin(); i != thresholds.end(); ++i) {
    const auto next = std::next(i);
    Change change{.from = VersionOf(*i),
                  .to = VersionOf(next == thresholds.end() ? LevelAndBuild{kLargestNumber, kLargestNumber}
                                                           : Predecessor(*next)),
                  .before = {},
                  .after = {}};
    change.before = AskClient(old_list, change.from).answer;
    change.after = AskClient(new_list, change.from).answer;
    const bool differs = change.before != change.after;
    if (differs && continues && changes.back().before == change.before &&
        changes.back().after == change.after) {
      changes.back().to = change.to;
    } else if (differs) {
      changes.push_back(change);
    }
    continues = differs;
  }
  return comparison;
}

}  // namespace packcheck
