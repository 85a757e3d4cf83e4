#include "packcheck/answers.h"

#include <algorithm>
#include <tuple>

#include "product/identity.h"
#include "text/text.h"
#include "update/decision.h"
#include "update/record_text.h"
#include "update/section_names.h"
#include "update/update_texts.h"

namespace packcheck {
namespace {

bool IsVersionNumber(std::int64_t number) {
  return number >= 0 && number <= kLargestNumber;
}

/// The highest level and build of all packs. Each pack is read as if it were the only one of the list.
LatestPack HighestNumbers(const std::vector<std::wstring>& sections) {
  LatestPack highest;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    LatestPack pack;
    FindLatestPack({sections.front(), sections[i]}, pack);
    if (IsNewer(pack, highest.level, highest.build)) highest = pack;
  }
  return highest;
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

}  // namespace

Published ReadPublished(std::string_view list, std::optional<std::string_view> record,
                        std::vector<std::wstring>& lost) {
  Published published{.sections = ReadSectionNames(list), .newest = {}, .record = {}};
  const std::size_t whole = CountWholeNames(published.sections, kSectionNamesCapacity);
  const auto first_lost = published.sections.begin() + static_cast<std::ptrdiff_t>(whole);
  lost.assign(first_lost, published.sections.end());
  published.sections.erase(first_lost, published.sections.end());
  if (published.sections.size() > 1) FindLatestPack(published.sections, published.newest);
  if (record) published.record = WidenBytes(*record);
  return published;
}

bool ClientAnswer::IsSameAs(const ClientAnswer& other) const {
  return std::tie(offered, exit_code, record_deleted) ==
         std::tie(other.offered, other.exit_code, other.record_deleted);
}

ClientAnswer AnswerFor(const Published& published, const Version& product) {
  const auto& [first, second, third, fourth] = product;
  const std::wstring level = std::to_wstring(third), build = std::to_wstring(fourth);
  const CheckFacts facts = {.sections = published.sections,
                            .latest = published.newest,
                            .record = published.record,
                            .product_version = text::FoldVersion(first, second, third, fourth),
                            .product_level = level,
                            .product_build = build};
  const Decision decision = Decide(facts, update_texts::kRecordDeleted);
  ClientAnswer client{.product = product,
                      .offered = decision.offered.value_or(false),
                      .exit_code = decision.exit_code,
                      .record_deleted = decision.removal.has_value(),
                      .log = {}};
  if (published.record)
    client.log = {std::wstring(update_texts::kRecordFound), std::wstring(update_texts::kRecordRead)};
  if (decision.removal) client.log.emplace_back(decision.removal->deleted);
  client.log.insert(client.log.end(), decision.entries.begin(), decision.entries.end());
  return client;
}

Version VersionOf(const LevelAndBuild& numbers) {
  const std::wstring_view major = identity::kProductVersion;
  const std::size_t point = major.find(L'.');
  const auto number = [](std::int64_t value) { return static_cast<std::uint16_t>(value); };
  return {number(text::ParseDecimal(major)), number(text::ParseDecimal(major.substr(point + 1))),
          number(numbers.first), number(numbers.second)};
}

std::string DottedText(const Version& version) {
  std::string text;
  for (const auto number : version) text += (text.empty() ? "" : ".") + std::to_string(number);
  return text;
}

std::set<LevelAndBuild> Thresholds(const Published& published) {
  const std::int64_t newest = published.newest.level;
  std::set<LevelAndBuild> found{{0, 0}, {newest, 0}, {newest, published.newest.build}, {newest + 1, 0}};
  // The decision compares the record's version with the folded one, in which ten builds count like a level.
  const Version zero = VersionOf({0, 0});
  const std::int64_t ahead = std::int64_t{ParseRecordVersion(published.record.value_or(L"")).value_or(0)} -
                             text::FoldVersion(zero[0], zero[1], 0, 0);
  for (std::int64_t level = 0; level * 10 < ahead && level <= kLargestNumber; ++level) {
    found.insert({level, ahead - level * 10});
    found.insert({level + 1, 0});
  }
  std::erase_if(found, [](const LevelAndBuild& numbers) {
    return !IsVersionNumber(numbers.first) || !IsVersionNumber(numbers.second);
  });
  return found;
}

std::optional<Version> FirstOfferedOlder(const Published& published) {
  Published recorded = published;
  recorded.record = RecordOf(published.sections);
  // This record covers the list, so only its version can cause an offer.
  if (!ParseRecordVersion(*recorded.record)) return std::nullopt;
  const LatestPack highest = HighestNumbers(published.sections);
  std::set<LevelAndBuild> candidates = Thresholds(recorded);
  if (IsVersionNumber(highest.level) && IsVersionNumber(highest.build))
    candidates.insert({highest.level, highest.build});
  for (const LevelAndBuild& numbers : candidates) {
    const Version version = VersionOf(numbers);
    if (!IsNewer(highest, version[2], version[3]) && AnswerFor(recorded, version).offered) return version;
  }
  return std::nullopt;
}

}  // namespace packcheck
