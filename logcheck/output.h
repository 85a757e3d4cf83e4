#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "console/json.h"
#include "logcheck/log_reader.h"
#include "logcheck/verdict.h"

/// What is shown of runs: text, or the structs as objects of JSON. Texts are UTF-8.
namespace logcheck {

inline void to_json(console::Json& json, Outcome outcome) {
  json = NameOf(outcome);
}

inline void to_json(console::Json& json, const Entry& entry) {
  json = entry.lines;
}
JSON_OF(Check, outcome, exit_code, error, step, advice, notes, entries)
JSON_OF(Run, file, time, mode, utility, product, administrator, checks, unknown, unknown_lines)

/// The run as text: at most 30 lines of at most 100 bytes, safe on a terminal.
std::string AsText(const Run& run);

/// The runs with one outcome and error.
struct SummaryRow {
  Outcome outcome = Outcome::failed;
  std::optional<std::string> error;
  std::size_t runs = 0;
  std::set<std::string> files;                ///< their names, as in Run
  std::optional<std::string> first, last;     ///< times as in Run
  std::map<std::string, std::size_t> advice;  ///< each sentence with its number of runs
};
JSON_OF(SummaryRow, outcome, error, runs, files, first, last, advice)

/// Counts runs by outcome and error.
class Summary {
 public:
  void Add(const Run& run);
  /// The outcome whose first run is the latest comes first.
  std::vector<SummaryRow> Rows() const;
  /// A table; under each row the advice and the names of the first files.
  std::string AsText() const;

 private:
  std::map<std::pair<Outcome, std::optional<std::string>>, SummaryRow> rows_;
};

/// The part of docs/log.md that lists every outcome, text and code, in Markdown.
std::string Guide();

}  // namespace logcheck
