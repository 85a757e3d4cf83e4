#include "packcheck/report.h"

#include <iterator>
#include <set>

#include "packcheck/warnings.h"

namespace packcheck {
namespace {

std::vector<ClientAnswer> Table(const Published& published) {
  std::vector<ClientAnswer> table;
  for (const LevelAndBuild& numbers : Thresholds(published)) {
    ClientAnswer client = AnswerFor(published, VersionOf(numbers));
    if (table.empty() || !table.back().IsSameAs(client)) table.push_back(std::move(client));
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
  Report report;
  const Published published = ReadPublished(list, record, report.dropped);
  if (!published.sections.empty()) {
    report.heading = published.sections.front();
    report.packs.assign(published.sections.begin() + 1, published.sections.end());
  }
  report.newest = published.newest;
  if (product) {
    report.client = AnswerFor(published, *product);
  } else {
    report.table = Table(published);
  }
  AddWarnings(list, published, report);
  return report;
}

std::vector<Change> Compare(std::string_view before, std::string_view after,
                            std::optional<std::string_view> record) {
  std::vector<std::wstring> lost;
  const Published old_list = ReadPublished(before, record, lost),
                  new_list = ReadPublished(after, record, lost);
  std::set<LevelAndBuild> thresholds = Thresholds(old_list);
  thresholds.merge(Thresholds(new_list));
  std::vector<Change> changes;
  bool continues = false;  // the last change reaches up to this threshold
  for (auto i = thresholds.begin(); i != thresholds.end(); ++i) {
    const auto next = std::next(i);
    const Version from = VersionOf(*i);
    const Version to = VersionOf(next == thresholds.end() ? LevelAndBuild{kLargestNumber, kLargestNumber}
                                                          : Predecessor(*next));
    ClientAnswer old_answer = AnswerFor(old_list, from), new_answer = AnswerFor(new_list, from);
    const bool differs = !old_answer.IsSameAs(new_answer);
    if (differs && continues && changes.back().before.IsSameAs(old_answer) &&
        changes.back().after.IsSameAs(new_answer)) {
      changes.back().to = to;
    } else if (differs) {
      changes.push_back(
          {.from = from, .to = to, .before = std::move(old_answer), .after = std::move(new_answer)});
    }
    continues = differs;
  }
  return changes;
}

}  // namespace packcheck
