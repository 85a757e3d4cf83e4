#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The outcome of a check, and what to do about it. Pure: depends only on the run.
namespace logcheck {

struct Run;

enum class Outcome {
  offered,
  none,
  no_list,
  failed,
  settings_mismatch,
  facts_missing,
  not_installed,
  no_check,  ///< of a run
};

struct OutcomeText {
  std::string_view name;   ///< "settings-mismatch"
  std::string_view means;  ///< a clause
};

/// All of them, in the order of the enumeration.
std::span<const OutcomeText> Outcomes();
std::string_view NameOf(Outcome outcome);

struct Verdict {
  Outcome outcome = Outcome::no_check;
  std::optional<int> exit_code{};      ///< the number of "Exit code" in the log
  std::optional<std::string> error{};  ///< code or message of the failure
  std::optional<std::string> step{};   ///< the entry that names the step that failed
  std::string advice{};                ///< one sentence: the meaning and the remedy
  /// Errors of the check that did not decide its outcome, one sentence each.
  std::vector<std::string> notes{};
};

/// Gives each check of the run its verdict.
void Judge(Run& run);

/// `clause` as a sentence: with a capital letter and a full stop.
std::string Sentence(std::string clause);

}  // namespace logcheck
