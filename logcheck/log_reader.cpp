#include "logcheck/log_reader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "log/log_texts.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

using View = std::wstring_view;

/// A byte order mark (of a file that was appended to another) and zeros (from a power cut) end a line as
/// well.
constexpr View kLineEnds(L"\n\r\0\uFEFF", 4);
constexpr View kBlanks = L" ,";
constexpr View kBuildVersion =
    log_texts::kBuildVersion.substr(0, log_texts::kBuildVersion.size() - log_texts::kNotAvailable.size());
constexpr std::array<View, 12> kMonths = {L"January",   L"February", L"March",    L"April",
                                          L"May",       L"June",     L"July",     L"August",
                                          L"September", L"October",  L"November", L"December"};

std::vector<View> SplitLines(View log) {
  std::vector<View> lines;
  while (!log.empty()) {
    const std::size_t end = std::min(log.find_first_of(kLineEnds), log.size());
    View line = log.substr(0, end);
    log.remove_prefix(std::min(end + 1, log.size()));
    // A header was appended to a torn line.
    const std::size_t torn = line.size() - std::min(line.size(), log_texts::kHeaderRule.size());
    if (torn > 0 && line.ends_with(log_texts::kHeaderRule)) line = line.substr(0, torn);
    if (!text::Trim(line).empty()) lines.push_back(line);
  }
  return lines;
}

/// True, false, or nothing when the line is torn.
std::optional<bool> Choice(bool yes, bool no) {
  return yes || no ? std::optional(yes) : std::nullopt;
}

bool IsNumber(View value) {
  return !value.empty() && value.find_first_not_of(L"0123456789") == value.npos;
}

/// Takes the next word off `value`; words end in blanks and commas.
View TakeWord(View& value) {
  const std::size_t start = std::min(value.find_first_not_of(kBlanks), value.size());
  const std::size_t end = std::min(value.find_first_of(kBlanks, start), value.size());
  const View word = value.substr(start, end - start);
  value.remove_prefix(end);
  return word;
}

/// "2026-11-21T22:30", or nothing when a part is out of range. `hour` is "22:30".
std::wstring IsoTime(View month, View day, View year, View hour) {
  const auto name = std::find(kMonths.begin(), kMonths.end(), month);
  const bool whole = name != kMonths.end() && day.size() == 2 && IsNumber(day) && year.size() == 4 &&
                     IsNumber(year) && hour.size() == 5 && hour[2] == L':' && IsNumber(hour.substr(0, 2)) &&
                     IsNumber(hour.substr(3));
  if (!whole || day < L"01" || day > L"31" || hour.substr(0, 2) > L"23" || hour.substr(3) > L"59") return {};
  const auto number = static_cast<std::int64_t>(name - kMonths.begin()) + 1;
  return std::wstring(year)
      .append(number < 10 ? L"-0" : L"-")
      .append(text::FormatDecimal(number))
      .append(L"-")
      .append(day)
      .append(L"T")
      .append(hour);
}

/// Time of the header: "Saturday 22:30, November 21, 2026".
std::wstring HeaderTime(View value) {
  TakeWord(value);
  const View hour = TakeWord(value), month = TakeWord(value), day = TakeWord(value);
  return IsoTime(month, day, TakeWord(value), hour);
}

/// `line` without the time in front of an error line: "November 21, 2026 Saturday 22:30: ".
View WithoutStamp(View line) {
  View rest = line;
  const View month = TakeWord(rest), day = TakeWord(rest), year = TakeWord(rest);
  TakeWord(rest);
  View hour = TakeWord(rest);
  if (!hour.ends_with(L':')) return line;
  hour.remove_suffix(1);
  return IsoTime(month, day, year, hour).empty() ? line : rest;
}

/// The number of lines, from `first` on, that match `known`; 0 when they do not. `rest` gets the text that
/// follows a match. `first_line`: the first of the lines, without a time in front of it.
std::size_t Match(const Text& known, View first_line, const std::vector<View>& lines, std::size_t first,
                  View& rest) {
  View wanted = known.text;
  for (std::size_t count = 1;; ++count) {
    if (first + count > lines.size()) return 0;
    const View line = text::Trim(count == 1 ? first_line : lines[first + count - 1]);
    const std::size_t end = wanted.find(L'\n');
    const View part = text::Trim(wanted.substr(0, end));
    if (end != wanted.npos) {
      if (line != part) return 0;
      wanted.remove_prefix(end + 1);
      continue;
    }
    if (known.open_ended ? !line.starts_with(part) : line != part) return 0;
    rest = text::Trim(line.substr(part.size()));
    return count;
  }
}

/// The text after `part` in `line`, in which only the product's name may precede it; nothing otherwise.
std::optional<View> TextAfter(View part, View line) {
  part = text::Trim(part);
  const std::size_t at = line.find(part);
  if (at == line.npos || (at != 0 && !line.starts_with(identity::kProductLabel))) return std::nullopt;
  return text::Trim(line.substr(at + part.size()));
}

/// A line that belongs to the entry before or after it.
Entry Neighbour(View line) {
  return {.line = std::wstring(line), .text = nullptr, .rest = {}};
}

class Reader {
 public:
  Reader(std::vector<View> lines, const std::function<void(Run&&)>& take)
      : lines_(std::move(lines)), take_(take) {}

  void Read() {
    for (std::size_t i = 0; i < lines_.size();) i += Take(i);
    if (run_) take_(std::move(*run_));
  }

 private:
  Run& CurrentRun() {
    if (!run_) run_.emplace();
    return *run_;
  }

  /// The run that line number `order` of a header belongs to. It is a new one when the current run already
  /// has that line, a later one or a check.
  Run& HeaderField(int order) {
    if (run_ && (order <= header_ || !run_->checks.empty())) {
      take_(std::move(*run_));
      run_.reset();
    }
    header_ = order;
    started_ = false;
    unknown_lines_ = 0;
    return CurrentRun();
  }

  bool TakeHeader(View line) {
    if (line == log_texts::kHeaderRule) return true;
    if (const auto version = TextAfter(log_texts::kFileVersion, line)) {
      HeaderField(1).utility = *version;
    } else if (const auto time = TextAfter(log_texts::kDateTime, line)) {
      HeaderField(2).time = HeaderTime(*time);
    } else if (const auto product = TextAfter(kBuildVersion, line)) {
      HeaderField(3).product = *product == log_texts::kNotAvailable ? View() : *product;
    } else if (line.starts_with(log_texts::kAppMode)) {
      line.remove_prefix(log_texts::kAppMode.size());
      Run& run = HeaderField(4);
      run.administrator = Choice(line.starts_with(log_texts::kAdmin), line.starts_with(log_texts::kUser));
      run.by_product =
          Choice(line.ends_with(log_texts::kInvokedByProduct), line.ends_with(log_texts::kInvokedByUser));
    } else {
      return false;
    }
    return true;
  }

  Check& CurrentCheck() {
    std::vector<Check>& checks = CurrentRun().checks;
    if (checks.empty()) checks.emplace_back();
    return checks.back();
  }

  /// A check begins with the entry of a retry, otherwise with its first frame line.
  void BeginCheck(View text) {
    const bool retry = text == update_texts::kRetry;
    if (!retry && text != update_texts::kEntriesStart) return;
    if (started_ || (retry && !CurrentRun().checks.empty())) CurrentRun().checks.emplace_back();
    started_ = !retry;
  }

  /// The line before the entry kRecordReadFailed is Windows' message, in any language.
  void TakeMessageBefore(const Text& text) {
    if (text.text != update_texts::kRecordReadFailed) return;
    std::vector<std::wstring>& unknown = CurrentRun().unknown;
    const auto first = unknown.end() - static_cast<std::ptrdiff_t>(unknown_lines_);
    for (auto line = first; line != unknown.end(); ++line) CurrentCheck().entries.push_back(Neighbour(*line));
    unknown.erase(first, unknown.end());
  }

  std::size_t TakeEntry(const Text& text, std::size_t first, std::size_t count, View rest) {
    BeginCheck(text.text);
    TakeMessageBefore(text);
    Entry entry{.line = std::wstring(lines_[first]), .text = &text, .rest = std::wstring(rest)};
    for (std::size_t i = 1; i < count; ++i) entry.line.append(L"\n").append(lines_[first + i]);
    CurrentCheck().entries.push_back(std::move(entry));
    unknown_lines_ = 0;
    return count;
  }

  /// A number belongs to the previous entry when that entry announces one.
  bool TakeNumber(View line) {
    if (unknown_lines_ > 0 || !run_ || run_->checks.empty()) return false;
    Entry& last = CurrentCheck().entries.back();
    const bool announced = last.text != nullptr && (last.text->text == update_texts::kStatusCode ||
                                                    last.text->text == update_texts::kOptionStatus);
    if (!announced || !IsNumber(text::Trim(line))) return false;
    last.rest = text::Trim(line);
    CurrentCheck().entries.push_back(Neighbour(line));
    return true;
  }

  /// Reads the header line, entry or unknown line at `first`; returns its number of lines.
  std::size_t Take(std::size_t first) {
    const View line = lines_[first];
    if (TakeHeader(text::Trim(line)) || TakeNumber(line)) return 1;
    const View first_line = WithoutStamp(line);
    for (const TextGroup& group : TextGroups()) {
      for (const Text& text : group.texts) {
        View rest;
        const std::size_t count =
            text.role == Role::header ? 0 : Match(text, first_line, lines_, first, rest);
        if (count > 0) return TakeEntry(text, first, count, rest);
      }
    }
    CurrentRun().unknown.emplace_back(line);
    ++unknown_lines_;
    return 1;
  }

  std::vector<View> lines_;
  const std::function<void(Run&&)>& take_;
  std::optional<Run> run_;
  int header_ = 0;                 ///< number of the last line of the header, 1 to 4
  bool started_ = false;           ///< the current check has its first frame line
  std::size_t unknown_lines_ = 0;  ///< unknown lines since the last entry
};

}  // namespace

void ReadLog(View log, const std::function<void(Run&&)>& take) {
  Reader(SplitLines(log), take).Read();
}

}  // namespace logcheck
