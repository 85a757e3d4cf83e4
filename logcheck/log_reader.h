#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "logcheck/texts.h"

/// Splits the text of a log into runs, checks and entries. Pure: no input and no output.
namespace logcheck {

/// One entry of a check.
struct Entry {
  std::wstring line;           ///< as in the log, with the lines of a longer message joined by "\n"
  const Text* text = nullptr;  ///< null: a number or Windows' message that belongs to a neighbouring entry
  std::wstring rest;           ///< what follows an open-ended text: code, message, path
};

/// One check of a run, with the lines before its first frame line (settings) and after its last (a failed
/// launch). A frame line is one of the four lines of "=====" that enclose the steps of a check.
struct Check {
  std::vector<Entry> entries;
};

/// One start of the utility. Empty where the header is torn or absent.
struct Run {
  std::wstring time;  ///< local time as "2026-11-21T22:30"
  std::optional<bool> by_product;
  std::wstring utility;  ///< version of the utility
  std::wstring product;  ///< file version of the product; also empty for NA
  std::optional<bool> administrator;
  std::vector<Check> checks;
  std::vector<std::wstring> unknown;  ///< lines that no version of the utility writes
};

/// Calls `take` with each run of a log, in the order of the log. Lines end in LF, CR LF or CR; blank lines do
/// not count. A run begins where a header begins. Entries before the first header are a run without a header.
/// A text that is not a log is one run without header and checks; an empty text has no run.
void ReadLog(std::wstring_view log, const std::function<void(Run&&)>& take);

}  // namespace logcheck
