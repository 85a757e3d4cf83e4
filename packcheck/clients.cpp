#include "packcheck/clients.h"

#include "product/identity.h"
#include "text/text.h"
#include "update/check_rules.h"
#include "update/section_names.h"
#include "update/update_texts.h"

namespace packcheck {
std::string DottedText(const Version& version) {
  std::string text;
  for (const auto number : version) text += (text.empty() ? "" : ".") + std::to_string(number);
  return text;
}

Published ReadPublished(std::string_view list, std::optional<std::string_view> record) {
  Published published{
      .sections = ReadSectionNames(list), .lost = {}, .hidden = {}, .newest = {}, .record = {}};
  const std::size_t whole = CountWholeNames(published.sections, kSectionNamesCapacity);
  const auto first_lost = published.sections.begin() + static_cast<std::ptrdiff_t>(whole);
  published.lost.assign(first_lost, published.sections.end());
  published.sections.erase(first_lost, published.sections.end());
  if (published.sections.size() > 1) FindLatestPack(published.sections, published.newest);
  if (list.starts_with(kUtf8Mark)) {
    const std::string_view unmarked = list.substr(kUtf8Mark.size());
    const auto names = ReadSectionNames(unmarked.substr(0, unmarked.find_first_of("\r\n")));
    if (!names.empty()) published.hidden = names.front();
  }
  if (record) published.record = WidenBytes(*record);
  return published;
}

Client AskClient(const Published& published, const Version& product) {
  const auto& [first, second, third, fourth] = product;
  const std::wstring level = std::to_wstring(third), build = std::to_wstring(fourth);
  const CheckFacts facts = {.sections = published.sections,
                            .latest = published.newest,
                            .record = published.record,
                            .record_version = ParseRecordVersion(published.record.value_or(L"")).value_or(0),
                            .product_version = text::FoldVersion(first, second, third, fourth),
                            .product_level = level,
                            .product_build = build};
  const Decision decision = Decide(facts);
  Client client{{.offered = decision.offered.value_or(false),
                 .exit_code = decision.exit_code,
                 .record_deleted = decision.delete_record},
                DottedText(product),
                {}};
  if (published.record)
    client.log = {std::wstring(update_texts::kRecordFound), std::wstring(update_texts::kRecordRead)};
  if (decision.delete_record) client.log.emplace_back(update_texts::kRecordDeleted);
  client.log.insert(client.log.end(), decision.entries.begin(), decision.entries.end());
  return client;
}

std::set<Version> Thresholds(const Published& published) {
  const std::wstring_view major = identity::kProductVersion;
  const std::int32_t first = text::ParseDecimal(major);
  const std::int32_t second = text::ParseDecimal(major.substr(major.find(L'.') + 1));
  std::set<Version> found;
  const auto add = [&](std::int64_t level, std::int64_t build) {
    const auto number = [](std::int64_t value) { return static_cast<std::uint16_t>(value); };
    if (IsVersionNumber(level) && IsVersionNumber(build))
      found.insert({number(first), number(second), number(level), number(build)});
  };
  add(0, 0);
  const std::int64_t newest = published.newest.level;
  add(newest, 0);
  add(newest, published.newest.build);
  add(newest + 1, 0);
  // The decision compares the record's version with the folded one, in which ten builds count like a level.
  const std::int64_t ahead = std::int64_t{ParseRecordVersion(published.record.value_or(L"")).value_or(0)} -
                             text::FoldVersion(first, second, 0, 0);
  for (std::int64_t level = 0; level * 10 < ahead && IsVersionNumber(level); ++level) {
    add(level, ahead - level * 10);
    add(level + 1, 0);
  }
  return found;
}

}  // namespace packcheck
