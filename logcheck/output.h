#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "logcheck/log_reader.h"
#include "logcheck/verdict.h"

namespace logcheck {

/// A run and the verdicts on its checks.
struct JudgedRun {
  Run run;
  std::vector<Verdict> verdicts;  ///< one for each check of the run
};

JudgedRun JudgeRun(Run run);

/// The run as text: at most 23 lines of at most 100 characters, safe on a terminal.
std::string AsText(const JudgedRun& judged);
/// The run as one JSON object on one line. `file`: its name in UTF-8.
std::string AsJson(const JudgedRun& judged, const std::string& file);

/// Counts runs by outcome and error. A run counts by its last check.
class Summary {
 public:
  void Add(const JudgedRun& judged, const std::string& file);
  /// A table. The outcome whose first run is the latest comes first.
  std::string AsText() const;
  /// The same rows as JSON, one object on a line.
  std::string AsJson() const;

 private:
  using Key = std::pair<std::string, std::wstring>;  ///< outcome, error
  struct Row {
    std::size_t runs = 0;
    std::set<std::string> files;
    std::wstring first, last;                   ///< times as in Run; empty: not known
    std::map<std::string, std::size_t> advice;  ///< each sentence with its number of runs
  };
  std::vector<std::pair<Key, Row>> Sorted() const;

  std::map<Key, Row> rows_;
  std::size_t runs_ = 0;
  std::set<std::string> files_;
};

}  // namespace logcheck
