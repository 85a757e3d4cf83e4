#pragma once

#include <span>
#include <string>
#include <string_view>

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

/// Gives each check of the run its verdict.
void Judge(Run& run);

/// `clause` as a sentence: with a capital letter and a full stop.
std::string Sentence(std::string clause);

}  // namespace logcheck
