#include "logcheck/log_reader.h"

#include <algorithm>
#include <array>
#include <deque>
#include <unordered_map>

#include "log/log_texts.h"
#include "update/update_texts.h"
#include "version.h"

namespace logcheck {
namespace {

using View = std::string_view;

constexpr std::size_t kLineLimit = 4096, kRunLimit = std::size_t{256} * 1024, kUnknownKept = 1000,
                      kUsualEntries = 32;
/// A byte order mark (of a file that was appended to another).
constexpr View kMark = "\xEF\xBB\xBF";
constexpr View kBlanks(" \0\t\n\v\f\r", 7);
constexpr std::array<View, 12> kMonths = {"January",   "February", "March",    "April",
                                          "May",       "June",     "July",     "August",
                                          "September", "October",  "November", "December"};

constexpr View Trim(View value) {
  value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
  return value.substr(0, value.find_last_not_of(kBlanks) + 1);
}

template <const std::wstring_view& wide>
constexpr auto kCharacters = [] {
  std::array<char, wide.size()> characters{};
  std::transform(wide.begin(), wide.end(), characters.begin(),
                 [](wchar_t c) { return static_cast<char>(c); });
  return characters;
}();
/// As Narrow, made by the compiler, because most lines of a log are compared with these texts.
template <const std::wstring_view& wide>
constexpr View kNarrow = Trim({kCharacters<wide>.data(), wide.size()});

/// The text whose first line is `line`; null for another line.
const Text* FindText(View line) {
  static std::deque<std::string> lines;
  static const auto texts = [] {
    std::unordered_map<View, const Text*> map;
    for (const TextGroup& group : TextGroups()) {
      for (const Text& text : group.texts) {
        if (text.role == Role::header) continue;
        map.emplace(lines.emplace_back(Narrow(text.text.substr(0, text.text.find(L'\n')))), &text);
      }
    }
    return map;
  }();
  const auto found = texts.find(line);
  return found == texts.end() ? nullptr : found->second;
}

std::optional<std::string> OrNothing(View text) {
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

bool IsNumber(View value) {
  return !value.empty() && value.find_first_not_of("0123456789") == value.npos;
}

/// "2026-11-21T22:30" for "Saturday 22:30, November 21, 2026"; nothing when a part is out of range.
std::string HeaderTime(View value) {
  std::array<std::string, 6> parts;
  for (std::string& part : parts) {
    value.remove_prefix(std::min(value.find_first_not_of(" :,"), value.size()));
    part = value.substr(0, value.find_first_of(" :,"));
    value.remove_prefix(part.size());
  }
  const auto& [weekday, hour, minute, month, day, year] = parts;
  const auto is_within = [](View part, View least, View most) {
    return IsNumber(part) && part.size() == least.size() && part >= least && part <= most;
  };
  const auto name = std::find(kMonths.begin(), kMonths.end(), month);
  if (name == kMonths.end() || !is_within(hour, "00", "23") || !is_within(minute, "00", "59") ||
      !is_within(day, "01", "31") || !is_within(year, "0000", "9999"))
    return {};
  const std::string number = std::to_string(101 + (name - kMonths.begin())).substr(1);
  return year + "-" + number + "-" + day + "T" + hour + ":" + minute;
}

/// The text after `part` in `line`, in which only the product's name may precede it; nothing otherwise.
std::optional<View> TextAfter(View part, View line) {
  const std::size_t at = line.find(part);
  if (at == line.npos || (at != 0 && !line.starts_with(TAVREL_PRODUCT_LABEL))) return std::nullopt;
  return Trim(line.substr(at + part.size()));
}

}  // namespace

void LogReader::Read(View block) {
  while (!block.empty()) {
    std::size_t end = block.find('\n');
    end = std::min(end, block.substr(0, end).find('\r'));
    partial_.append(block.substr(0, std::min(end, kLineLimit - partial_.size())));
    if (end == block.npos) return;
    block.remove_prefix(end + 1);
    TakeLine(partial_);
    partial_.clear();
  }
}

void LogReader::End() {
  TakeLine(partial_);
  partial_.clear();
  EndRun();
}

void LogReader::EndRun() {
  if (has_run_) take_(run_);
  has_run_ = false;
  run_ = {};
  size_ = unknown_in_a_row_ = 0;
}

/// A byte order mark and zeros (from a power cut) end a line as well.
void LogReader::TakeLine(View line) {
  line = Trim(line);
  if (line.empty()) return;
  if (const Text* text = FindText(line)) return TakeEntry(*text, line, {});
  const std::size_t end = std::min(line.find('\0'), line.find(kMark));
  if (end == line.npos) return TakePart(line);
  TakeLine(line.substr(0, end));
  TakeLine(line.substr(end + (line[end] == '\0' ? 1 : kMark.size())));
}

void LogReader::TakePart(View line) {
  constexpr View rule = kNarrow<log_texts::kHeaderRule>;
  // A torn line, to which a header was appended, can stand before the rule.
  if (line.ends_with(rule)) return TakeLine(line.substr(0, line.size() - rule.size()));
  if (TakeRest(line) || TakeHeader(line)) return;
  // A time stands before an error of the log file, and a message or code can stand after it.
  constexpr View code = kNarrow<update_texts::kErrorPrefix>;
  for (const View part : {code, kNarrow<log_texts::kUpdateFailed>, kNarrow<log_texts::kCreationFailed>}) {
    const std::size_t at = line.find(part);
    if (at == 0 || (at != line.npos && part != code))
      return TakeEntry(*FindText(part), line, Trim(line.substr(at + part.size())));
  }
  TakeUnknown(line);
}

/// A check begins with the entry of a retry, otherwise with its first frame line.
void LogReader::TakeEntry(const Text& text, View line, View rest) {
  if (size_ > kRunLimit) EndRun();
  has_run_ = true;
  const bool retry = text.text == update_texts::kRetry;
  const bool starts = retry || text.text == update_texts::kEntriesStart;
  if (run_.checks.empty() || (starts && (retry || started_)))
    run_.checks.emplace_back().entries.reserve(kUsualEntries);
  if (starts) started_ = !retry;
  Entry& entry = run_.checks.back().entries.emplace_back();
  entry.text = &text;
  entry.rest = rest;
  if (text.text == update_texts::kRecordReadFailed && run_.unknown_lines <= kUnknownKept) {
    // The lines before this entry are Windows' message, in any language.
    const auto first = run_.unknown.end() - static_cast<std::ptrdiff_t>(unknown_in_a_row_);
    for (auto message = first; message != run_.unknown.end(); ++message) {
      entry.rest = entry.lines += *message;
      entry.lines += '\n';
    }
    run_.unknown.erase(first, run_.unknown.end());
    run_.unknown_lines -= unknown_in_a_row_;
  }
  entry.lines += line;
  size_ += entry.lines.size();
  unknown_in_a_row_ = 0;
}

/// Adds to the last entry what belongs to it: its second line, a code, or a number that it announces.
bool LogReader::TakeRest(View line) {
  if (run_.checks.empty() || unknown_in_a_row_ > 0) return false;
  Entry& last = run_.checks.back().entries.back();
  const Text& text = *last.text;
  const std::size_t line_end = text.text.find(L'\n');
  std::string prefix;
  if (line_end != text.text.npos && last.lines.find('\n') == last.lines.npos) {
    prefix = Narrow(text.text.substr(line_end));
  } else if (!last.rest.empty() || text.role == Role::progress || text.role == Role::code) {
    return false;
  } else if (!IsNumber(line) || (text.role != Role::odd_status && text.text != update_texts::kOptionStatus)) {
    prefix = Narrow(update_texts::kErrorPrefix);
  }
  if (!line.starts_with(prefix)) return false;
  last.lines.append("\n").append(line);
  last.rest = Trim(line.substr(prefix.size()));
  size_ += 1 + line.size();
  return true;
}

/// The run for header line `order` (1 to 4). A new run begins if this line repeats or goes back, or the
/// current run already has a check.
Run& LogReader::HeaderField(int order) {
  if (has_run_ && (order <= header_ || !run_.checks.empty())) EndRun();
  header_ = order;
  has_run_ = true;
  started_ = false;
  unknown_in_a_row_ = 0;
  return run_;
}

bool LogReader::TakeHeader(View line) {
  using namespace log_texts;
  if (const auto utility = TextAfter(kNarrow<kFileVersion>, line)) {
    HeaderField(1).utility = OrNothing(*utility);
  } else if (const auto time = TextAfter(kNarrow<kDateTime>, line)) {
    HeaderField(2).time = OrNothing(HeaderTime(*time));
  } else if (const auto product = TextAfter(kNarrow<kBuildVersionLabel>, line)) {
    HeaderField(3).product = OrNothing(*product == kNarrow<kNotAvailable> ? View() : *product);
  } else if (line.starts_with(kNarrow<kAppMode>)) {
    const View rights = Trim(line.substr(kNarrow<kAppMode>.size()));
    Run& run = HeaderField(4);
    if (rights.starts_with(kNarrow<kAdmin>) || rights.starts_with(kNarrow<kUser>))
      run.administrator = rights.starts_with(kNarrow<kAdmin>);
    if (line.ends_with(kNarrow<kInvokedByProduct>)) run.mode = "start-up";
    if (line.ends_with(kNarrow<kInvokedByUser>)) run.mode = "interactive";
  } else {
    return false;
  }
  return true;
}

void LogReader::TakeUnknown(View line) {
  has_run_ = true;
  ++run_.unknown_lines;
  ++unknown_in_a_row_;
  if (run_.unknown.size() < kUnknownKept) run_.unknown.emplace_back(line);
}

}  // namespace logcheck
