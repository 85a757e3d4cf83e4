#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "logcheck/texts.h"
#include "logcheck/verdict.h"

/// Splits the text of a log into runs, checks and entries. Pure: no input and no output.
namespace logcheck {

/// One entry of a check, with the code, number or message that follows it (or, for a record that could not be
/// read, precedes it).
struct Entry {
  const Text* text = nullptr;  ///< never null
  std::string lines;           ///< as in the log, separated by "\n"
  std::string rest;            ///< the code, number, message or path
};

/// A check has also the lines before its first frame line (settings) and after its last (a failed launch). A
/// frame line is one of the four lines of "=====" that enclose its steps.
struct Check {
  std::vector<Entry> entries{};  ///< never empty

  // The verdict, which Judge adds.
  Outcome outcome = Outcome::no_check;
  std::optional<int> exit_code{};      ///< the number of "Exit code" in the log
  std::optional<std::string> error{};  ///< code or message of the failure
  std::optional<std::string> step{};   ///< the entry that names the step that failed
  std::string advice{};                ///< one sentence: the meaning and the remedy
  /// Errors of the check that did not decide its outcome, one sentence each.
  std::vector<std::string> notes{};
};

/// One start of the utility. Texts are UTF-8, as far as the log is.
struct Run {
  std::string file;  ///< its name, safe on a terminal; for the caller of the reader
  // The header; nothing where it is torn or absent.
  std::optional<std::string> time;     ///< local time as "2026-11-21T22:30"
  std::optional<std::string> mode;     ///< of the check: "start-up" or "interactive"
  std::optional<std::string> utility;  ///< version of the utility
  std::optional<std::string> product;  ///< file version of the product; nothing for NA
  std::optional<bool> administrator;
  std::vector<Check> checks;
  std::vector<std::string> unknown;  ///< the first lines that no version of the utility writes
  std::size_t unknown_lines = 0;     ///< the number of all such lines

  /// If the run has no check: one without entries and verdict.
  const Check& LastCheck() const {
    static const Check none;
    return checks.empty() ? none : checks.back();
  }
};

/// Reads a log block by block, in memory that does not depend on its size: lines are cut after 4 KiB, a
/// longer run than 256 KiB is given in parts, and of its unknown lines 1,000 are kept. Lines end in LF, CR LF
/// or CR; blank lines do not count. A run begins where a header begins. Entries before the first header are a
/// run without a header. A text that is not a log is one run without header and checks; an empty text has no
/// run.
class LogReader {
 public:
  /// `take` gets each run, in the order of the log. It may move from it.
  explicit LogReader(std::function<void(Run&)> take) : take_(std::move(take)) {}

  void Read(std::string_view block);
  /// After the last block.
  void End();

 private:
  void TakeLine(std::string_view line);
  void TakePart(std::string_view line);
  void TakeEntry(const Text& text, std::string_view line, std::string_view rest);
  bool TakeRest(std::string_view line);
  bool TakeHeader(std::string_view line);
  void TakeUnknown(std::string_view line);
  Run& HeaderField(int order);
  void EndRun();

  const std::function<void(Run&)> take_;
  std::string partial_;  ///< the beginning of a line whose end is in the next block
  Run run_;
  bool has_run_ = false;
  std::size_t size_ = 0;              ///< of the run's entries
  int header_ = 0;                    ///< number of the last line of the header, 1 to 4
  bool started_ = false;              ///< the current check has its first frame line
  std::size_t unknown_in_a_row_ = 0;  ///< unknown lines since the last entry
};

}  // namespace logcheck
