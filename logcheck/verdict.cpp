#include "logcheck/verdict.h"

#include <algorithm>
#include <initializer_list>

#include "logcheck/log_reader.h"
#include "update/update_texts.h"
#include "version.h"

namespace logcheck {
namespace {

constexpr OutcomeText kOutcomes[] = {
    {"offered", "an update is offered"},
    {"none", "no update is offered"},
    {"no-list", "the server's answer names no pack: the page of a portal or proxy, or a list without packs"},
    {"failed", "the exchange with the server failed, or the log ends before the check does"},
    {"settings-mismatch", "the settings and the product's address of the list do not fit together"},
    {"facts-missing", "a registry value of the product or the version of " TAVREL_IMAGE
                      " is missing, so nothing could be compared"},
    {"not-installed",
     "the registry value Version of the product is missing or not exactly \"" TAVREL_PRODUCT_VERSION "\""},
    {"no-check", "the run has no check"},
};

constexpr std::string_view kNoPack =
    "the server sent a list without a pack; open updates.ini in the user's %TEMP%: a web page in it comes "
    "from a portal or proxy that answers for the server; if it is a list, packcheck tells the publisher what "
    "is wrong";
constexpr std::string_view kOffered =
    "an update is offered; the user installs it with Install Updates in the window that the Start menu entry "
    "opens";
constexpr std::string_view kNothingNewer =
    "no pack of the list is newer than " TAVREL_IMAGE
    "; if the publisher names a newer one, packcheck shows which packs of the list clients read";
constexpr std::string_view kRecordedOrNotNewer =
    "the record installedupdates.dat names every pack of the list, or no pack is newer than " TAVREL_IMAGE
    "; compare the newest pack with the version of " TAVREL_IMAGE
    ": if that is older, delete installedupdates.dat in its folder as an administrator and check again";
constexpr std::string_view kVersionCountsAsZero =
    "the header names no version of " TAVREL_IMAGE
    "; where it was not read, it counted as 0 in the comparison with installedupdates.dat, and this outcome "
    "means nothing; check that Installpath names the folder of " TAVREL_IMAGE
    " and that the file is readable, and keep the record";
constexpr std::string_view kNoExecutable =
    "the list was fetched, but the file version of " TAVREL_IMAGE
    " in the folder Installpath could not be read; check that value and that the file is there and readable, "
    "or install " TAVREL_PRODUCT_LABEL " again";
constexpr std::string_view kNoValues =
    "a registry value of the product is missing, so no server was asked; install " TAVREL_PRODUCT_LABEL
    " again";
constexpr std::string_view kOtherVersion =
    "the registry value Version of the product is not exactly \"" TAVREL_PRODUCT_VERSION
    "\", so no server was asked; correct it, or install " TAVREL_PRODUCT_LABEL " again";
constexpr std::string_view kTorn =
    "the log ends before the check does, because the utility was ended or the file is cut; check again and "
    "let the window finish";
constexpr std::string_view kTornError = "the log ends here";
/// In characters: longest message or path of a log that an advice quotes.
constexpr std::size_t kQuoted = 120;

bool Is(const Entry& entry, std::wstring_view text) {
  return entry.text->text == text;
}

bool Is(const Entry& entry, Role role) {
  return entry.text->role == role;
}

class Judgement {
 public:
  Judgement(const Run& run, Check& check) : run_(run), check_(check) {}

  void Decide() {
    if (details_ != nullptr) check_.exit_code = details_->text->text[details_->text->text.size() - 2] - L'0';
    DecideOutcome();
    // An update that was found and could not be started needs help first.
    if (const Entry* launch = Find(Role::launch_failed)) {
      check_.step = StepOf(*launch);
      check_.advice = Explain(*launch);
    }
    for (const Entry& entry : check_.entries) {
      if (Is(entry, Role::trouble)) check_.notes.push_back(Explain(entry));
    }
  }

 private:
  template <class Wanted>
  const Entry* Find(const Wanted& wanted) const {
    for (const Entry& entry : check_.entries) {
      if (Is(entry, wanted)) return &entry;
    }
    return nullptr;
  }

  /// The error number, or else the message, of `entry`.
  static std::string_view ErrorOf(const Entry& entry) {
    const std::string_view error = entry.rest;
    const std::size_t digits = std::min(error.find_first_not_of("0123456789"), error.size());
    return digits > 0 ? error.substr(0, digits) : error;
  }

  /// The entry without a code that follows it.
  static std::string StepOf(const Entry& entry) {
    const bool two_lines = entry.text->text.find(L'\n') != std::wstring_view::npos;
    return two_lines ? entry.lines : entry.lines.substr(0, entry.lines.find('\n'));
  }

  /// "the value could not be read (2: the value does not exist); install the product again".
  static std::string Explain(const Entry& entry) {
    const Text& text = *entry.text;
    std::string sentence(text.means);
    std::string_view advice = text.advice;
    const std::string_view error = ErrorOf(entry);
    if (!error.empty() && error.find_first_not_of("0123456789") == error.npos) {
      const bool http = text.role == Role::odd_status || text.text == update_texts::kNotFound;
      const Code code = FindCode(error, http);
      sentence.append(" (").append(error).append(": ").append(code.means).append(")");
      if (advice.empty() || (text.role == Role::value_missing && error != "2")) advice = code.advice;
    } else if (!error.empty() && text.role != Role::mismatch) {
      sentence.append(" (").append(error.substr(0, kQuoted)).append(")");
    }
    if (!advice.empty()) sentence.append("; ").append(advice);
    return Sentence(std::move(sentence));
  }

  /// The first entry about a missing registry value that no later entry has read; null when there is none.
  const Entry* FindMissingValue() const {
    for (auto entry = check_.entries.begin(); entry != check_.entries.end(); ++entry) {
      if (!Is(*entry, Role::value_missing)) continue;
      const bool read_later = std::any_of(entry, check_.entries.end(), [&](const Entry& later) {
        return Is(later, Role::value_read) && later.text->reader == entry->text->reader;
      });
      if (!read_later) return &*entry;
    }
    return nullptr;
  }

  void Set(Outcome outcome, const Entry& step) {
    Set(outcome, Explain(step));
    check_.step = StepOf(step);
    if (const std::string_view error = ErrorOf(step); !error.empty()) check_.error = error;
  }

  void Set(Outcome outcome, std::string_view advice) {
    check_.outcome = outcome;
    check_.advice = Sentence(std::string(advice));
  }

  /// The first candidate that is not null. The last one is not.
  static const Entry& FirstOf(std::initializer_list<const Entry*> candidates) {
    return **std::find_if(candidates.begin(), candidates.end(), [](const Entry* e) { return e != nullptr; });
  }

  void DecideOutcome() {
    const Entry* const missing = FindMissingValue();
    // A check that ended before it asked a server.
    if (const Entry* refusal = Find(Role::not_installed)) {
      Set(Outcome::not_installed, FirstOf({missing, refusal}));
      if (!missing && Find(Role::value_read)) check_.advice = Sentence(std::string(kOtherVersion));
      return;
    }
    if (const Entry* facts = Find(Role::facts_missing))
      return Set(Outcome::facts_missing, FirstOf({missing, facts}));
    if (const Entry* mismatch = Find(Role::mismatch)) {
      // A missing address is the cause, because no host can occur in it.
      Set(Outcome::settings_mismatch,
          FirstOf({Find(update_texts::kUrlMode), missing, Find(update_texts::kHostNotMatched), mismatch}));
      check_.error = ErrorOf(*mismatch);
      return;
    }

    // The exchange.
    const bool ended = Find(update_texts::kUpdatesEnd), matching = Find(update_texts::kMatching);
    if (const Entry* failed = Find(Role::exchange_failed)) {
      Set(Outcome::failed, *failed);
      if (!check_.error) check_.error = check_.step;
      return;
    }
    if (const Entry* status = Find(Role::odd_status)) {
      // An error page has no packs. A list that came with the status decides the outcome.
      if (matching) return Set(Outcome::none, *status);
      if (offered_) return Set(Outcome::offered, *status);
      if (details_ || !ended) return Set(Outcome::failed, *status);
    }

    // The comparison.
    const bool recorded = check_.exit_code == 1;
    if (details_ && recorded && !run_.product)
      return Set(offered_ ? Outcome::offered : Outcome::none, kVersionCountsAsZero);
    if (offered_) return Set(Outcome::offered, kOffered);
    if (details_ && !matching) return Set(Outcome::no_list, kNoPack);
    if (details_) return Set(Outcome::none, recorded ? kRecordedOrNotNewer : kNothingNewer);
    if (!ended) {
      check_.step = StepOf(check_.entries.back());
      check_.error = kTornError;
      return Set(Outcome::failed, kTorn);
    }
    if (Find(update_texts::kCompleted)) return Set(Outcome::facts_missing, kNoExecutable);
    if (missing) return Set(Outcome::facts_missing, *missing);
    Set(Outcome::facts_missing, kNoValues);
  }

  const Run& run_;
  Check& check_;
  const Entry* const offered_ = Find(Role::offered);  ///< null: no update was offered
  /// The entry with the exit code; null: none.
  const Entry* const details_ = offered_ ? offered_ : Find(Role::not_offered);
};

}  // namespace

std::span<const OutcomeText> Outcomes() {
  return kOutcomes;
}

std::string_view NameOf(Outcome outcome) {
  return kOutcomes[static_cast<std::size_t>(outcome)].name;
}

void Judge(Run& run) {
  for (Check& check : run.checks) Judgement(run, check).Decide();
}

std::string Sentence(std::string clause) {
  if (clause.empty()) return clause;
  if (clause.front() >= 'a' && clause.front() <= 'z')
    clause.front() = static_cast<char>(clause.front() - 'a' + 'A');
  if (clause.back() != '.') clause += '.';
  return clause;
}

}  // namespace logcheck
