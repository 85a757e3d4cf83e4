#include "logcheck/output.h"

#include <algorithm>

#include "console/json.h"
#include "console/text.h"
#include "text/text.h"

namespace logcheck {
namespace {

using console::Json;
using console::Printable;

constexpr std::size_t kWidth = 100;
/// Longest line of a log that is shown, with blanks and quotation marks around it.
constexpr std::size_t kLineShown = 88;
/// With these bounds the text of any run fits on a screen.
constexpr std::size_t kChecksShown = 2, kNotesShown = 2, kUnknownShown = 2;
constexpr std::string_view kNoCheck = "no check";

/// `text` in lines of at most kWidth characters, each after `indent` blanks.
std::string Wrapped(std::string_view text, std::size_t indent) {
  const std::string margin(indent, ' ');
  std::string result;
  while (!text.empty()) {
    std::size_t end = text.size();
    if (end > kWidth - indent) {
      end = text.rfind(' ', kWidth - indent);
      if (end == text.npos || end == 0) end = kWidth - indent;
    }
    result.append(margin).append(text.substr(0, end)).append("\n");
    text.remove_prefix(std::min(text.find_first_not_of(' ', end), text.size()));
  }
  return result;
}

/// A line of the log in quotation marks, cut when it is long.
std::string Quoted(std::wstring_view line) {
  std::wstring shown(text::Trim(line));
  text::ReplaceAll(shown, L"\n", L" ");
  const bool cut = shown.size() > kLineShown;
  if (cut) shown.resize(kLineShown);
  return "\"" + Printable(shown) + (cut ? "..." : "") + "\"";
}

/// "2026-11-21 22:30" from "2026-11-21T22:30".
std::string ShownTime(const std::wstring& time) {
  if (time.empty()) return "unknown         ";
  std::string shown = Printable(time);
  std::replace(shown.begin(), shown.end(), 'T', ' ');
  return shown;
}

std::string Plural(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string ShownOutcome(const Verdict& verdict) {
  std::string shown(NameOf(verdict.outcome));
  if (!verdict.error.empty()) shown += " (" + Printable(verdict.error) + ")";
  return shown;
}

std::string Headline(const Run& run) {
  std::string line = ShownTime(run.time) + "  ";
  line += !run.by_product   ? "mode unknown"
          : *run.by_product ? "started by the product"
                            : "started by the user";
  line += ", utility " + (run.utility.empty() ? "unknown" : Printable(run.utility));
  line += ", product " + (run.product.empty() ? "not read" : Printable(run.product));
  line += !run.administrator ? "" : *run.administrator ? ", administrator" : ", ordinary user";
  return Wrapped(line, 0);
}

/// Shows the notes of the last check only.
std::string CheckText(const Verdict& verdict, std::size_t number, std::size_t count) {
  const std::string label =
      count == 1 ? "" : "check " + std::to_string(number) + " of " + std::to_string(count) + ": ";
  std::string shown = Wrapped(label + ShownOutcome(verdict), 2);
  if (!verdict.step.empty()) shown += Wrapped("at " + Quoted(verdict.step), 4);
  shown += Wrapped(verdict.advice, 4);
  const std::size_t notes = number < count ? 0 : std::min(verdict.notes.size(), kNotesShown);
  for (std::size_t i = 0; i < notes; ++i) {
    shown += Wrapped("Also: " + verdict.notes[i], 4);
  }
  return shown;
}

/// The line for the first `count` checks, which are not shown one by one: each outcome once, in their order.
std::string EarlierChecks(const std::vector<Verdict>& verdicts, std::size_t count) {
  std::string outcomes;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string outcome = ShownOutcome(verdicts[i]);
    if (outcomes.find(outcome) != outcomes.npos) continue;
    outcomes += (outcomes.empty() ? "" : ", ") + outcome;
  }
  return "  " + Plural(count, "earlier check") + ": " + outcomes.substr(0, kLineShown - 20) + "\n";
}

Json TextOrNull(std::wstring_view text) {
  return text.empty() ? Json() : Json(console::Utf8(text));
}

template <class Value>
Json ValueOrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

Json Lines(const std::vector<std::wstring>& lines) {
  Json array = Json::array();
  for (const std::wstring& line : lines) array.push_back(console::Utf8(line));
  return array;
}

Json CheckAsJson(const Check& check, const Verdict& verdict) {
  std::vector<std::wstring> entries;
  entries.reserve(check.entries.size());
  for (const Entry& entry : check.entries) entries.push_back(entry.line);
  return {{"outcome", NameOf(verdict.outcome)}, {"exit_code", ValueOrNull(verdict.exit_code)},
          {"error", TextOrNull(verdict.error)}, {"step", TextOrNull(verdict.step)},
          {"advice", verdict.advice},           {"entries", Lines(entries)}};
}

}  // namespace

JudgedRun JudgeRun(Run run) {
  JudgedRun judged{.run = std::move(run), .verdicts = {}};
  for (const Check& check : judged.run.checks) judged.verdicts.push_back(Judge(check));
  return judged;
}

std::string AsText(const JudgedRun& judged) {
  const std::vector<Verdict>& verdicts = judged.verdicts;
  const std::vector<std::wstring>& unknown = judged.run.unknown;
  std::string text = Headline(judged.run);
  const std::size_t first = verdicts.size() - std::min(verdicts.size(), kChecksShown);
  if (verdicts.empty()) text += "  no check\n";
  if (first > 0) text += EarlierChecks(verdicts, first);
  for (std::size_t i = first; i < verdicts.size(); ++i)
    text += CheckText(verdicts[i], i + 1, verdicts.size());
  if (unknown.empty()) return text;
  text += "  " + Plural(unknown.size(), "line") + " that no version of the utility writes:\n";
  for (std::size_t i = 0; i < std::min(unknown.size(), kUnknownShown); ++i) {
    text += "    " + Quoted(unknown[i]) + "\n";
  }
  return text;
}

std::string AsJson(const JudgedRun& judged, const std::string& file) {
  const Run& run = judged.run;
  Json checks = Json::array();
  for (std::size_t i = 0; i < run.checks.size(); ++i) {
    checks.push_back(CheckAsJson(run.checks[i], judged.verdicts[i]));
  }
  return console::JsonLine({{"file", file},
                            {"time", TextOrNull(run.time)},
                            {"mode", !run.by_product ? Json() : Json(*run.by_product ? "patch" : "regular")},
                            {"utility", TextOrNull(run.utility)},
                            {"product", TextOrNull(run.product)},
                            {"administrator", ValueOrNull(run.administrator)},
                            {"checks", checks},
                            {"unknown", Lines(run.unknown)}});
}

void Summary::Add(const JudgedRun& judged, const std::string& file) {
  const Verdict* last = judged.verdicts.empty() ? nullptr : &judged.verdicts.back();
  Row& row =
      rows_[{std::string(last ? NameOf(last->outcome) : kNoCheck), last ? last->error : std::wstring()}];
  const std::wstring& time = judged.run.time;
  ++row.runs;
  ++runs_;
  row.files.insert(file);
  files_.insert(file);
  if (row.first.empty() || (!time.empty() && time < row.first)) row.first = time;
  row.last = std::max(row.last, time);
  if (last != nullptr) ++row.advice[last->advice];
}

std::vector<std::pair<Summary::Key, Summary::Row>> Summary::Sorted() const {
  std::vector<std::pair<Key, Row>> rows(rows_.begin(), rows_.end());
  std::stable_sort(rows.begin(), rows.end(),
                   [](const auto& a, const auto& b) { return a.second.first > b.second.first; });
  return rows;
}

std::string Summary::AsText() const {
  const auto column = [](const std::string& text) {
    return std::string(7 - std::min<std::size_t>(text.size(), 7), ' ') + text;
  };
  std::string text = "First seen        Last seen           Runs  Files  Outcome\n";
  for (const auto& [key, row] : Sorted()) {
    text += ShownTime(row.first) + "  " + ShownTime(row.last) + column(std::to_string(row.runs)) +
            column(std::to_string(row.files.size())) + "  " + key.first +
            (key.second.empty() ? "" : " (" + Printable(key.second) + ")") + "\n";
    for (const auto& [advice, runs] : row.advice) text += Wrapped(std::to_string(runs) + ": " + advice, 4);
  }
  return text + Plural(runs_, "run") + " in " + Plural(files_.size(), "file") + "\n";
}

std::string Summary::AsJson() const {
  std::string lines;
  for (const auto& [key, row] : Sorted()) {
    Json advice = Json::object();
    for (const auto& [sentence, runs] : row.advice) advice[sentence] = runs;
    lines += console::JsonLine({{"outcome", key.first == kNoCheck ? Json() : Json(key.first)},
                                {"error", TextOrNull(key.second)},
                                {"runs", row.runs},
                                {"files", row.files.size()},
                                {"first", TextOrNull(row.first)},
                                {"last", TextOrNull(row.last)},
                                {"advice", advice}});
  }
  return lines;
}

}  // namespace logcheck
