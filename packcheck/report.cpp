#include "packcheck/report.h"

#include <iterator>
#include <set>

#include "packcheck/clients.h"

namespace packcheck {
namespace {

std::vector<Row> Table(const Published& published) {
  std::vector<Row> table;
  for (const ClientNumber number : Thresholds(published)) {
    const Client client = AskClient(published, VersionOf(number));
    if (table.empty() || table.back().answer != client.answer)
      table.push_back({.from = client.product, .answer = client.answer});
  }
  return table;
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
  std::set<ClientNumber> thresholds = Thresholds(old_list);
  thresholds.merge(Thresholds(new_list));
  Comparison comparison{.changes = {}, .warnings = FindWarnings(after, new_list).size()};
  std::vector<Change>& changes = comparison.changes;
  bool continues = false;  // the last change reaches up to this threshold
  for (auto i = thresholds.begin(); i != thresholds.end(); ++i) {
    const auto next = std::next(i);
    // Before the first client comes the last one.
    const ClientNumber last = (next == thresholds.end() ? 0 : *next) - 1;
    const Change change{.from = VersionOf(*i),
                        .to = VersionOf(last),
                        .before = AskClient(old_list, VersionOf(*i)).answer,
                        .after = AskClient(new_list, VersionOf(*i)).answer};
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
