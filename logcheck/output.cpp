#include "logcheck/output.h"

#include <algorithm>
#include <iomanip>
#include <span>
#include <sstream>
#include <string_view>

#include "console/text.h"

namespace logcheck {
namespace {

using console::Printable;

constexpr std::size_t kWidth = 100;
/// In bytes: longest line of a log that is shown, with blanks and quotation marks around it.
constexpr std::size_t kLineShown = 88;
/// With these bounds the text of any run fits on a screen.
constexpr std::size_t kChecksShown = 2, kNotesShown = 2, kUnknownShown = 2;
constexpr std::size_t kFilesShown = 5;

/// The part of `text` that ends at `end` or before it, where a character of UTF-8 ends.
std::string_view CutAt(std::string_view text, std::size_t end) {
  if (end >= text.size()) return text;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

/// `text` in lines of at most kWidth characters, each after `indent` blanks.
std::string Wrapped(std::string_view text, std::size_t indent) {
  const std::string margin(indent, ' ');
  std::string result;
  while (!text.empty()) {
    std::string_view line = CutAt(text, kWidth - indent);
    const std::size_t blank = text.rfind(' ', kWidth - indent);
    if (line.size() < text.size() && blank != text.npos && blank > 0) line = text.substr(0, blank);
    result.append(margin).append(line).append("\n");
    text.remove_prefix(std::min(text.find_first_not_of(' ', line.size()), text.size()));
  }
  return result;
}

/// A line of the log in quotation marks, cut when it is long.
std::string Quoted(std::string_view line) {
  std::string shown(CutAt(line, kLineShown));
  std::replace(shown.begin(), shown.end(), '\n', ' ');
  return "\"" + Printable(shown) + (shown.size() < line.size() ? "..." : "") + "\"";
}

/// "2026-11-21 22:30" from "2026-11-21T22:30".
std::string ShownTime(const std::optional<std::string>& time) {
  std::string shown = time.value_or("unknown         ");
  std::replace(shown.begin(), shown.end(), 'T', ' ');
  return shown;
}

std::string Plural(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string ShownOutcome(Outcome outcome, const std::optional<std::string>& error) {
  return std::string(NameOf(outcome)) + (error ? " (" + Printable(*error) + ")" : "");
}

std::string Headline(const Run& run) {
  std::string line = ShownTime(run.time) + "  ";
  line += !run.mode                 ? "mode unknown"
          : *run.mode == "start-up" ? "started by the product"
                                    : "started by the user";
  line += ", utility " + Printable(run.utility.value_or("unknown"));
  line += ", product " + Printable(run.product.value_or("not read"));
  line += !run.administrator ? "" : *run.administrator ? ", administrator" : ", ordinary user";
  return Wrapped(line, 0);
}

/// Shows the notes of the last check only.
std::string CheckText(const Check& check, std::size_t number, std::size_t count) {
  const std::string label =
      count == 1 ? "" : "check " + std::to_string(number) + " of " + std::to_string(count) + ": ";
  std::string shown = Wrapped(label + ShownOutcome(check.outcome, check.error), 2);
  if (check.step) shown += Wrapped("at " + Quoted(*check.step), 4);
  shown += Wrapped(Printable(check.advice), 4);
  const std::size_t notes = number < count ? 0 : std::min(check.notes.size(), kNotesShown);
  for (std::size_t i = 0; i < notes; ++i) shown += Wrapped("Also: " + Printable(check.notes[i]), 4);
  return shown;
}

/// The line for `checks`, which are not shown one by one: each outcome once, in their order.
std::string EarlierChecks(std::span<const Check> checks) {
  std::string outcomes;
  for (const Check& check : checks) {
    const std::string outcome = ShownOutcome(check.outcome, check.error);
    if (outcomes.find(outcome) != outcomes.npos) continue;
    outcomes += (outcomes.empty() ? "" : ", ") + outcome;
  }
  return "  " + Plural(checks.size(), "earlier check") + ": " +
         std::string(CutAt(outcomes, kLineShown - 20)) + "\n";
}

}  // namespace

std::string AsText(const Run& run) {
  const std::span<const Check> checks(run.checks);
  std::string text = Headline(run);
  const std::size_t first = checks.size() - std::min(checks.size(), kChecksShown);
  if (checks.empty()) text += "  no check\n";
  if (first > 0) text += EarlierChecks(checks.first(first));
  for (std::size_t i = first; i < checks.size(); ++i) text += CheckText(checks[i], i + 1, checks.size());
  if (run.unknown_lines == 0) return text;
  text += "  " + Plural(run.unknown_lines, "line") + " that no version of the utility writes:\n";
  for (std::size_t i = 0; i < std::min(run.unknown.size(), kUnknownShown); ++i) {
    text += "    " + Quoted(run.unknown[i]) + "\n";
  }
  return text;
}

void Summary::Add(const Run& run) {
  const Check& check = run.LastCheck();
  SummaryRow& row = rows_[{check.outcome, check.error}];
  row.outcome = check.outcome;
  row.error = check.error;
  ++row.runs;
  row.files.insert(run.file);
  if (!row.first || (run.time && run.time < row.first)) row.first = run.time;
  row.last = std::max(row.last, run.time);
  if (!check.advice.empty()) ++row.advice[check.advice];
}

std::vector<SummaryRow> Summary::Rows() const {
  std::vector<SummaryRow> rows;
  rows.reserve(rows_.size());
  for (const auto& [key, row] : rows_) rows.push_back(row);
  std::stable_sort(rows.begin(), rows.end(),
                   [](const SummaryRow& a, const SummaryRow& b) { return a.first > b.first; });
  return rows;
}

std::string Summary::AsText() const {
  std::ostringstream text;
  text << "First seen        Last seen           Runs  Files  Outcome\n";
  std::size_t runs = 0;
  std::set<std::string> files;
  for (const SummaryRow& row : Rows()) {
    runs += row.runs;
    files.insert(row.files.begin(), row.files.end());
    text << ShownTime(row.first) << "  " << ShownTime(row.last) << std::setw(7) << row.runs << std::setw(7)
         << row.files.size() << "  " << ShownOutcome(row.outcome, row.error) << "\n";
    for (const auto& [advice, count] : row.advice)
      text << Wrapped(std::to_string(count) + ": " + Printable(advice), 4);
    std::size_t shown = 0;
    for (const std::string& file : row.files) {
      if (shown++ < kFilesShown) text << "      " << file << "\n";
    }
    if (shown > kFilesShown) text << "      and " << Plural(shown - kFilesShown, "file") << " more\n";
  }
  text << Plural(runs, "run") << " in " << Plural(files.size(), "file") << "\n";
  return text.str();
}

}  // namespace logcheck
