#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "logcheck/log_reader.h"

/// The outcome of a check, and what to do about it. Pure: depends only on the entries of the check.
namespace logcheck {

enum class Outcome { offered, none, failed, settings_mismatch, facts_missing, not_installed };

/// "offered", "settings-mismatch" and so on.
std::string_view NameOf(Outcome outcome);
/// The meaning of the outcome, as a clause.
std::string_view MeaningOf(Outcome outcome);

struct Verdict {
  Outcome outcome = Outcome::failed;
  std::optional<int> exit_code;  ///< the number of "Exit code" in the log
  std::wstring error;            ///< code or message of the failure; empty: none
  std::wstring step;             ///< the entry that names the step that failed; empty: none
  std::string advice;            ///< one sentence: the meaning and the remedy
  /// Errors of the check that did not decide its outcome, one sentence each.
  std::vector<std::string> notes;
};

/// `check` has at least one entry.
Verdict Judge(const Check& check);

/// `clause` as a sentence: with a capital letter and a full stop.
std::string Sentence(std::string clause);

}  // namespace logcheck
