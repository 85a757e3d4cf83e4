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

/// What is shown of runs. The structs are the objects of the JSON output. Texts are UTF-8.
namespace logcheck {

inline void to_json(console::Json& json, Outcome outcome) {
  json = NameOf(outcome);
}

struct CheckReport : Verdict {
  std::vector<std::string> entries;
};
JSON_OF(CheckReport, outcome, exit_code, error, step, advice, notes, entries)

struct RunReport : Header {
  std::string file;  ///< its name, safe on a terminal
  std::vector<CheckReport> checks;
  std::vector<std::string> unknown;  ///< as in Run
  std::size_t unknown_lines = 0;
};
JSON_OF(RunReport, file, time, mode, utility, product, administrator, checks, unknown, unknown_lines)

RunReport MakeReport(const Run& run, const std::string& file);
/// The run as text: at most 30 lines of at most 100 bytes, safe on a terminal.
std::string AsText(const RunReport& report);

/// The runs with one outcome and error.
struct SummaryRow {
  Outcome outcome = Outcome::failed;
  std::optional<std::string> error;
  std::size_t runs = 0;
  std::set<std::string> files;                ///< their names, as in RunReport
  std::optional<std::string> first, last;     ///< times as in Run
  std::map<std::string, std::size_t> advice;  ///< each sentence with its number of runs
};
JSON_OF(SummaryRow, outcome, error, runs, files, first, last, advice)

/// Counts runs by outcome and error.
class Summary {
 public:
  void Add(const Run& run, const Verdict& verdict, const std::string& file);
  /// The outcome whose first run is the latest comes first.
  std::vector<SummaryRow> Rows() const;
  /// A table; under each row the advice and the names of the first files.
  std::string AsText() const;

 private:
  std::map<std::pair<Outcome, std::optional<std::string>>, SummaryRow> rows_;
};

}  // namespace logcheck
