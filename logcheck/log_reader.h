#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "logcheck/texts.h"

/// Splits the text of a log into runs, checks and entries. Pure: no input and no output.
namespace logcheck {

/// A part of Run::text.
struct Slice {
  std::size_t start = 0, size = 0;
};

/// One entry of a check, with the code, number or message that follows it (or, for a record that could not be
/// read, precedes it).
struct Entry {
  const Text* text = nullptr;  ///< never null
  Slice lines;                 ///< as in the log, separated by "\n"
  Slice rest;                  ///< the code, number, message or path
};

/// The header of a run; nothing where it is torn or absent.
struct Header {
  std::optional<std::string> time;     ///< local time as "2026-11-21T22:30"
  std::optional<std::string> mode;     ///< of the check: "start-up" or "interactive"
  std::optional<std::string> utility;  ///< version of the utility
  std::optional<std::string> product;  ///< file version of the product; nothing for NA
  std::optional<bool> administrator;
};

/// One start of the utility. Texts are UTF-8, as far as the log is.
struct Run {
  Header header;
  std::string text;
  std::vector<Entry> entries;
  /// The first entry of each check. A check has also the lines before its first frame line (settings) and
  /// after its last (a failed launch). A frame line is one of the four lines of "=====" that enclose its
  /// steps.
  std::vector<std::size_t> checks;
  std::vector<std::string> unknown;  ///< the first lines that no version of the utility writes
  std::size_t unknown_lines = 0;     ///< the number of all such lines

  std::string_view Of(Slice slice) const { return std::string_view(text).substr(slice.start, slice.size); }
  std::span<const Entry> EntriesOf(std::size_t check) const;
  bool HasHeader() const { return header.utility || header.time; }
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
  void BeginCheck(std::wstring_view text);
  Header& HeaderField(int order);
  void EndRun();
  Slice Append(std::string_view text);

  const std::function<void(Run&)> take_;
  std::string partial_;  ///< the beginning of a line whose end is in the next block
  Run run_;
  bool has_run_ = false;
  int header_ = 0;                    ///< number of the last line of the header, 1 to 4
  bool started_ = false;              ///< the current check has its first frame line
  std::wstring_view second_line_;     ///< of the last entry, if it is a text of two lines
  std::size_t unknown_in_a_row_ = 0;  ///< unknown lines since the last entry
};

}  // namespace logcheck
