#include "logcheck/verdict.h"

#include <algorithm>
#include <array>

#include "text/text.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

using Entries = std::vector<Entry>;

struct OutcomeText {
  std::string_view name, means;
};

constexpr std::array<OutcomeText, 6> kOutcomes = {{
    {.name = "offered", .means = "an update is offered"},
    {.name = "none", .means = "no update is offered"},
    {.name = "failed", .means = "the exchange with the server failed, or the log ends before the check does"},
    {.name = "settings-mismatch",
     .means = "the settings and the product's address of the list do not fit together"},
    {.name = "facts-missing",
     .means = "a value of the product is missing (WARNING: 101), so nothing could be compared"},
    {.name = "not-installed", .means = "no product of version 15.0 is registered"},
}};

constexpr std::string_view kNoPack =
    "the server sent a list without a pack; open updates.ini in the user's %TEMP%: a web page in it "
    "comes from a portal or proxy that answers for the server, a list without packs from the publisher";
constexpr std::string_view kOffered =
    "an update is offered; the user installs it with Install Updates in the window that the Start menu "
    "entry opens";
constexpr std::string_view kUpToDate =
    "the newest pack of the server's list is installed; nothing is to be done";
constexpr std::string_view kNoExecutable =
    "the list was fetched, but the file version of Qrt.exe in the folder Installpath could not be read; "
    "check that the file is there and readable, or install Varnexa 15.0 again";
constexpr std::string_view kNoValues =
    "DisplayVersion, DisplayIcon or URLUpdateInfo of the product is missing (WARNING: 101), so no server "
    "was asked; install Varnexa 15.0 again";
constexpr std::string_view kOtherVersion =
    "another version of the product than 15.0 is registered, so no server was asked; use the utility that "
    "belongs to that version, or install Varnexa 15.0";
constexpr std::string_view kTorn =
    "the log ends before the check does, because the utility was ended or the file is cut; check again and "
    "let the window finish";
constexpr std::wstring_view kTornError = L"the log ends here";

bool Is(const Entry& entry, std::wstring_view text) {
  return entry.text != nullptr && entry.text->text == text;
}

bool Is(const Entry& entry, Role role) {
  return entry.text != nullptr && entry.text->role == role;
}

template <class Wanted>
const Entry* Find(const Entries& entries, const Wanted& wanted) {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return Is(e, wanted); });
  return found == entries.end() ? nullptr : &*found;
}

/// The error number, or else the message, of `entry`: from the code entry after it, or from its own end.
std::wstring ErrorOf(const Entries& entries, const Entry& entry) {
  const Entry* next = &entry + 1;
  std::wstring_view error = entry.rest;
  if (next != entries.data() + entries.size() && Is(*next, Role::code)) error = next->rest;
  const std::size_t digits = std::min(error.find_first_not_of(L"0123456789"), error.size());
  return std::wstring(digits > 0 ? error.substr(0, digits) : error);
}

/// "the value could not be read (2: the value does not exist); install the product again".
std::string Explain(const Text& text, std::wstring_view error) {
  std::string sentence(text.means);
  std::string_view advice = text.advice;
  // The entry itself shows paths and messages.
  const bool has_code = !error.empty() && error.find_first_not_of(L"0123456789") == error.npos;
  if (has_code) {
    const bool http = text.role == Role::odd_status || text.text == update_texts::kNotFound;
    const Code code = FindCode(error, http);
    sentence.append(" (");
    for (const wchar_t digit : error) sentence += static_cast<char>(digit);
    sentence.append(": ").append(code.means).append(")");
    if (advice.empty()) advice = code.advice;
  }
  if (!advice.empty()) sentence.append("; ").append(advice);
  return Sentence(sentence);
}

/// The first entry about a missing registry value that no later entry has read; null when there is none.
const Entry* FindMissingValue(const Entries& entries) {
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    if (!Is(*entry, Role::value_missing)) continue;
    const bool read_later = std::any_of(entry, entries.end(), [&](const Entry& later) {
      return Is(later, Role::value_read) && later.text->reader == entry->text->reader;
    });
    if (!read_later) return &*entry;
  }
  return nullptr;
}

class Judgement {
 public:
  explicit Judgement(const Entries& entries) : entries_(entries) {}

  Verdict Decide() {
    result_.exit_code = ExitCode();
    if (!DecideBeforeServer() && !DecideExchange()) DecideComparison();
    DecideLaunch();
    for (const Entry& entry : entries_) {
      if (Is(entry, Role::trouble)) result_.notes.push_back(Explain(*entry.text, ErrorOf(entries_, entry)));
    }
    return std::move(result_);
  }

 private:
  std::optional<int> ExitCode() const {
    for (std::size_t i = 1; i < update_texts::kDetailsFound.size(); ++i) {
      if (Find(entries_, update_texts::kDetailsFound[i]) ||
          Find(entries_, update_texts::kDetailsNotFound[i])) {
        return static_cast<int>(i);
      }
    }
    return std::nullopt;
  }

  bool Set(Outcome outcome, const Entry& step) {
    result_.outcome = outcome;
    result_.step = text::Trim(step.line);
    result_.error = ErrorOf(entries_, step);
    result_.advice = Explain(*step.text, result_.error);
    return true;
  }

  bool Set(Outcome outcome, std::string_view advice) {
    result_.outcome = outcome;
    result_.advice = Sentence(std::string(advice));
    return true;
  }

  /// The first candidate that is not null. The last one is not.
  static const Entry& FirstOf(std::initializer_list<const Entry*> candidates) {
    return **std::find_if(candidates.begin(), candidates.end(), [](const Entry* e) { return e != nullptr; });
  }

  /// Decides the outcome of a check that ended before it asked a server; false when it did not end there.
  bool DecideBeforeServer() {
    const Entry* missing = FindMissingValue(entries_);
    if (const Entry* refusal = Find(entries_, Role::not_installed)) {
      Set(Outcome::not_installed, FirstOf({missing, refusal}));
      if (Find(entries_, Role::value_read)) result_.advice = Sentence(std::string(kOtherVersion));
      return true;
    }
    if (const Entry* facts = Find(entries_, Role::facts_missing)) {
      return Set(Outcome::facts_missing, FirstOf({missing, facts}));
    }
    if (const Entry* mismatch = Find(entries_, Role::mismatch)) {
      // A missing address is the cause, because no host can occur in it.
      Set(Outcome::settings_mismatch, FirstOf({Find(entries_, update_texts::kUrlMode), missing,
                                               Find(entries_, update_texts::kHostNotMatched), mismatch}));
      result_.error = update_texts::kMismatch;
      return true;
    }
    return false;
  }

  bool DecideExchange() {
    if (const Entry* failed = Find(entries_, Role::exchange_failed)) {
      Set(Outcome::failed, *failed);
      if (result_.error.empty()) result_.error = result_.step;
      return true;
    }
    const Entry* status = Find(entries_, Role::odd_status);
    if (status == nullptr) return false;
    // An error page has no packs. A list that came with the status decides the outcome.
    if (Find(entries_, update_texts::kMatching)) return Set(Outcome::none, *status);
    return Set(Find(entries_, Role::offered) ? Outcome::offered : Outcome::failed, *status);
  }

  void DecideComparison() {
    if (Find(entries_, Role::offered)) {
      Set(Outcome::offered, kOffered);
    } else if (Find(entries_, Role::not_offered)) {
      Set(Outcome::none, Find(entries_, update_texts::kMatching) ? kUpToDate : kNoPack);
    } else if (!Find(entries_, update_texts::kUpdatesEnd)) {
      Set(Outcome::failed, kTorn);
      result_.step = text::Trim(entries_.back().line);
      result_.error = kTornError;
    } else if (Find(entries_, update_texts::kCompleted)) {
      Set(Outcome::facts_missing, kNoExecutable);
    } else if (const Entry* missing = FindMissingValue(entries_)) {
      Set(Outcome::facts_missing, *missing);
    } else {
      Set(Outcome::facts_missing, kNoValues);
    }
  }

  /// An update that was found and could not be started needs help first.
  void DecideLaunch() {
    const Entry* launch = Find(entries_, Role::launch_failed);
    if (launch == nullptr) return;
    result_.step = text::Trim(launch->line);
    result_.advice = Explain(*launch->text, {});
  }

  const Entries& entries_;
  Verdict result_;
};

}  // namespace

std::string_view NameOf(Outcome outcome) {
  return kOutcomes[static_cast<std::size_t>(outcome)].name;
}

std::string_view MeaningOf(Outcome outcome) {
  return kOutcomes[static_cast<std::size_t>(outcome)].means;
}

Verdict Judge(const Check& check) {
  return Judgement(check.entries).Decide();
}

std::string Sentence(std::string clause) {
  if (clause.empty()) return clause;
  if (clause.front() >= 'a' && clause.front() <= 'z')
    clause.front() = static_cast<char>(clause.front() - 'a' + 'A');
  if (clause.back() != '.') clause += '.';
  return clause;
}

}  // namespace logcheck
