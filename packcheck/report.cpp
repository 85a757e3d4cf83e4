#include "packcheck/report.h"

#include <set>

#include "packcheck/clients.h"

namespace packcheck {
namespace {

std::vector<Row> Table(const Published& published) {
  std::vector<Row> table;
  for (const Version& version : Thresholds(published)) {
    const Answer answer = AskClient(published, version);
    if (table.empty() || table.back() != answer) table.push_back({answer, DottedText(version)});
  }
  return table;
}

/// The last version before this one; before the first client comes the last one.
Version Before(Version version) {
  if (version[3]-- == 0) --version[2];
  return version;
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
  std::set<Version> thresholds = Thresholds(old_list);
  thresholds.merge(Thresholds(new_list));
  Comparison comparison{.changes = {}, .warnings = FindWarnings(after, new_list).size()};
  std::vector<Change>& changes = comparison.changes;
  for (const Version& version : thresholds) {
    const Change change{.from = DottedText(version),
                        .to = DottedText(Before(*thresholds.begin())),
                        .before = AskClient(old_list, version),
                        .after = AskClient(new_list, version)};
    if (!changes.empty()) {
      if (changes.back().before == change.before && changes.back().after == change.after) continue;
      changes.back().to = DottedText(Before(version));
    }
    changes.push_back(change);
  }
  std::erase_if(changes, [](const Change& change) { return change.before == change.after; });
  return comparison;
}

}  // namespace packcheck
