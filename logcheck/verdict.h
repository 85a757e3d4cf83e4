#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "logcheck/log_reader.h"

/// What came of a check, and what is to be done. Pure: decided from the check's entries alone.
namespace logcheck {

enum class Outcome { offered, none, failed, settings_mismatch, facts_missing, not_installed };

/// "offered", "settings-mismatch" and so on.
std::string_view NameOf(Outcome outcome);
/// What the outcome means, as a clause.
std::string_view MeaningOf(Outcome outcome);

struct Verdict {
  Outcome outcome = Outcome::failed;
  std::optional<int> exit_code;  ///< the number of "Exit code" in the log
  std::wstring error;            ///< code or message of the failure; empty: none
  std::wstring step;             ///< the entry that names the step that failed; empty: none
  std::string advice;            ///< one sentence: what it means and what to do
  /// What else went wrong in the check without deciding it: a sentence each.
  std::vector<std::string> notes;
};

/// `check` has at least one entry.
Verdict Judge(const Check& check);

/// `clause` as a sentence: with a capital letter and a full stop.
std::string Sentence(std::string clause);

}  // namespace logcheck
