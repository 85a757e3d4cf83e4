#include "update/decision.h"

#include "text/text.h"
#include "update/record_text.h"
#include "update/update_texts.h"

namespace {

/// A list that holds a pack has its heading section and at least one more.
constexpr std::size_t kHeadingAndPack = 2;

// The exit codes that the log entries name.
constexpr int kWithRecord = 1;
constexpr int kEmptyRecordOrList = 2;
constexpr int kWithoutRecord = 3;

void Offer(Decision& decision) {
  decision.offered = true;
  decision.entries.push_back(update_texts::kDetailsFound[static_cast<std::size_t>(decision.exit_code)]);
}

void OfferNothing(Decision& decision) {
  decision.offered = false;
  decision.entries.push_back(update_texts::kDetailsNotFound[static_cast<std::size_t>(decision.exit_code)]);
}

void OfferNothingNewer(Decision& decision) {
  OfferNothing(decision);
  decision.entries.push_back(update_texts::kMatching);
}

void OfferNewerPack(const CheckFacts& facts, Decision& decision) {
  if (facts.product_level.empty() || facts.product_build.empty()) return;
  if (IsNewer(facts.latest, text::ParseDecimal(facts.product_level),
              text::ParseDecimal(facts.product_build))) {
    Offer(decision);
  } else {
    OfferNothingNewer(decision);
  }
}

void DecideByVersions(const CheckFacts& facts, std::wstring_view record, std::wstring_view record_deleted,
                      Decision& decision) {
  if (facts.product_version >= ParseRecordVersion(record).value_or(facts.record_version)) {
    OfferNothingNewer(decision);
    return;
  }
  decision.removal = {.deleted = record_deleted,
                      .denied = update_texts::kRecordDenied,
                      .failed = update_texts::kRecordNotDeleted};
  Offer(decision);
}

}  // namespace

Decision Decide(const CheckFacts& facts, std::wstring_view record_deleted) {
  const bool has_pack = facts.sections.size() >= kHeadingAndPack;
  const std::wstring_view record = text::Trim(facts.record.value_or(std::wstring_view()));
  Decision decision;
  decision.exit_code = !facts.record                 ? kWithoutRecord
                       : record.empty() || !has_pack ? kEmptyRecordOrList
                                                     : kWithRecord;
  if (!has_pack) {
    if (!facts.record) decision.entries.push_back(update_texts::kRecordMissing);
    OfferNothing(decision);
    return decision;
  }
  decision.record_covers_list = decision.exit_code == kWithRecord &&
                                CountRecordedPacks(facts.sections, record) == facts.sections.size() - 1;
  if (decision.record_covers_list) {
    DecideByVersions(facts, record, record_deleted, decision);
  } else {
    OfferNewerPack(facts, decision);
  }
  return decision;
}
