#include "logcheck/log_reader.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "log/log_texts.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

using View = std::string_view;

constexpr std::size_t kLineLimit = 4096, kRunLimit = std::size_t{256} * 1024, kUnknownKept = 1000;
/// A byte order mark (of a file that was appended to another).
constexpr View kMark = "\xEF\xBB\xBF";
constexpr std::array<View, 12> kMonths = {"January",   "February", "March",    "April",
                                          "May",       "June",     "July",     "August",
                                          "September", "October",  "November", "December"};

bool IsBlank(char c) {
  return c == ' ' || c == '\0' || (c >= '\t' && c <= '\r');
}

View Trim(View value) {
  while (!value.empty() && IsBlank(value.front())) value.remove_prefix(1);
  while (!value.empty() && IsBlank(value.back())) value.remove_suffix(1);
  return value;
}

/// A constant of the utility, all of which are ASCII, without the blanks around it.
std::string Narrow(std::wstring_view wide) {
  std::string text;
  for (const wchar_t c : text::Trim(wide)) text += static_cast<char>(c);
  return text;
}

std::wstring_view FirstLine(std::wstring_view text) {
  return text.substr(0, text.find(L'\n'));
}

/// Cheap, because every line of a log is looked up: lengths and ends tell most of the constants apart.
struct Hash {
  std::size_t operator()(View line) const {
    std::size_t hash = line.size();
    for (const char c : line.substr(line.size() - std::min<std::size_t>(line.size(), 4)))
      hash = hash * 31 + static_cast<unsigned char>(c);
    return hash;
  }
};

/// The text whose first line is `line`; null for another line.
const Text* FindText(View line) {
  static const auto* const texts = [] {
    static std::vector<std::string> names;
    static std::unordered_map<View, const Text*, Hash> map;
    std::vector<const Text*> all;
    for (const TextGroup& group : TextGroups()) {
      for (const Text& text : group.texts) {
        if (text.role != Role::header || text.text == log_texts::kHeaderRule) all.push_back(&text);
      }
    }
    names.reserve(all.size());
    for (const Text* text : all) map.emplace(names.emplace_back(Narrow(FirstLine(text->text))), text);
    return &map;
  }();
  const auto found = texts->find(line);
  return found == texts->end() ? nullptr : found->second;
}

/// "Error :", in front of a code or message that follows an entry.
View CodePrefix() {
  static const std::string prefix = Narrow(update_texts::kErrorPrefix);
  return prefix;
}

std::optional<std::string> OrNothing(View text) {
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

bool IsNumber(View value) {
  return !value.empty() && value.find_first_not_of("0123456789") == value.npos;
}

/// "2026-11-21T22:30" for "Saturday 22:30, November 21, 2026"; nothing when a part is out of range.
std::string HeaderTime(View value) {
  std::array<View, 6> parts{};
  for (View& part : parts) {
    value.remove_prefix(std::min(value.find_first_not_of(" :,"), value.size()));
    part = value.substr(0, value.find_first_of(" :,"));
    value.remove_prefix(part.size());
  }
  const auto& [weekday, hour, minute, month, day, year] = parts;
  const auto two_digits = [](View part, View least, View most) {
    return IsNumber(part) && part.size() == 2 && part >= least && part <= most;
  };
  const auto name = std::find(kMonths.begin(), kMonths.end(), month);
  if (name == kMonths.end() || !IsNumber(year) || year.size() != 4) return {};
  if (!two_digits(hour, "00", "23") || !two_digits(minute, "00", "59") || !two_digits(day, "01", "31"))
    return {};
  const std::string number = std::to_string(101 + (name - kMonths.begin())).substr(1);
  return std::string(year)
      .append("-")
      .append(number)
      .append("-")
      .append(day)
      .append("T")
      .append(hour)
      .append(":")
      .append(minute);
}

/// The text after `part` in `line`, in which only the product's name may precede it; nothing otherwise.
std::optional<View> TextAfter(View part, View line) {
  static const std::string label = Narrow(identity::kProductLabel);
  const std::size_t at = line.find(part);
  if (at == line.npos || (at != 0 && !line.starts_with(label))) return std::nullopt;
  return Trim(line.substr(at + part.size()));
}

}  // namespace

std::span<const Entry> Run::EntriesOf(std::size_t check) const {
  const std::size_t end = check + 1 < checks.size() ? checks[check + 1] : entries.size();
  return std::span(entries).subspan(checks[check], end - checks[check]);
}

void LogReader::Read(View block) {
  while (!block.empty()) {
    std::size_t end = block.find('\n');
    end = std::min(end, block.substr(0, end).find('\r'));
    const View line = block.substr(0, end);
    const std::size_t space = kLineLimit - std::min(kLineLimit, partial_.size());
    if (end == block.npos) {
      partial_.append(line.substr(0, space));
      return;
    }
    block.remove_prefix(end + 1);
    if (partial_.empty()) {
      TakeLine(line.substr(0, kLineLimit));
    } else {
      partial_.append(line.substr(0, space));
      TakeLine(partial_);
      partial_.clear();
    }
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
  // Keeps the memory of the texts and lists for the next run.
  run_.header = {};
  run_.text.clear();
  run_.entries.clear();
  run_.checks.clear();
  run_.unknown.clear();
  run_.unknown_lines = unknown_in_a_row_ = 0;
  second_line_ = {};
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
  static const std::string rule = Narrow(log_texts::kHeaderRule);
  // A header was appended to a torn line.
  if (line.ends_with(rule)) return TakeLine(line.substr(0, line.size() - rule.size()));
  if (TakeRest(line) || TakeHeader(line)) return;
  // A time stands before an error of the log file, and a message or code can stand after it.
  static const std::string log_failed = Narrow(log_texts::kUpdateFailed),
                           not_made = Narrow(log_texts::kCreationFailed);
  for (const View part : {CodePrefix(), View(log_failed), View(not_made)}) {
    const std::size_t at = part == CodePrefix() ? 0 : line.find(part);
    if (at != line.npos && line.substr(at).starts_with(part))
      return TakeEntry(*FindText(part), line, Trim(line.substr(at + part.size())));
  }
  TakeUnknown(line);
}

Slice LogReader::Append(View text) {
  const Slice slice{.start = run_.text.size(), .size = text.size()};
  run_.text.append(text);
  return slice;
}

void LogReader::TakeEntry(const Text& text, View line, View rest) {
  if (text.role == Role::header) return;
  if (run_.text.size() > kRunLimit) EndRun();
  has_run_ = true;
  BeginCheck(text.text);
  if (run_.checks.empty()) run_.checks.push_back(0);
  Entry entry{.text = &text, .lines = Append({}), .rest = {}};
  if (text.text == update_texts::kRecordReadFailed && run_.unknown_lines <= kUnknownKept) {
    // The lines before this entry are Windows' message, in any language.
    const auto first = run_.unknown.end() - static_cast<std::ptrdiff_t>(unknown_in_a_row_);
    for (auto message = first; message != run_.unknown.end(); ++message) {
      run_.text.append(*message);
      entry.rest = {.start = entry.lines.start, .size = run_.text.size() - entry.lines.start};
      run_.text += '\n';
    }
    run_.unknown.erase(first, run_.unknown.end());
    run_.unknown_lines -= unknown_in_a_row_;
  }
  const Slice own = Append(line);
  if (!rest.empty()) entry.rest = {.start = own.start + own.size - rest.size(), .size = rest.size()};
  entry.lines.size = own.start + own.size - entry.lines.start;
  run_.entries.push_back(entry);
  const std::size_t line_end = text.text.find(L'\n');
  second_line_ = line_end == text.text.npos ? std::wstring_view() : text.text.substr(line_end + 1);
  unknown_in_a_row_ = 0;
}

/// Adds to the last entry what belongs to it: its second line, a code, or a number that it announces.
bool LogReader::TakeRest(View line) {
  if (run_.entries.empty() || unknown_in_a_row_ > 0) return false;
  Entry& last = run_.entries.back();
  View rest = line;
  if (!second_line_.empty()) {
    const std::string second = Narrow(second_line_);
    if (!line.starts_with(second)) return false;
    rest.remove_prefix(second.size());
    second_line_ = {};
  } else if (line.starts_with(CodePrefix())) {
    if (last.rest.size > 0 || last.text->role == Role::progress || last.text->role == Role::code)
      return false;
    rest.remove_prefix(CodePrefix().size());
  } else if ((last.text->role != Role::odd_status && last.text->text != update_texts::kOptionStatus) ||
             last.rest.size > 0 || !IsNumber(line)) {
    return false;
  }
  rest = Trim(rest);
  run_.text += '\n';
  const Slice added = Append(line);
  last.lines.size = added.start + added.size - last.lines.start;
  if (!rest.empty()) last.rest = {.start = added.start + added.size - rest.size(), .size = rest.size()};
  return true;
}

/// The run for header line `order` (1 to 4). A new run begins if this line repeats or goes back, or the
/// current run already has a check.
Header& LogReader::HeaderField(int order) {
  if (has_run_ && (order <= header_ || !run_.checks.empty())) EndRun();
  header_ = order;
  has_run_ = true;
  started_ = false;
  unknown_in_a_row_ = 0;
  return run_.header;
}

bool LogReader::TakeHeader(View line) {
  static const std::string version = Narrow(log_texts::kFileVersion), time = Narrow(log_texts::kDateTime),
                           build = Narrow(log_texts::kBuildVersion.substr(
                               0, log_texts::kBuildVersion.size() - log_texts::kNotAvailable.size())),
                           mode = Narrow(log_texts::kAppMode), admin = Narrow(log_texts::kAdmin),
                           user = Narrow(log_texts::kUser), unread = Narrow(log_texts::kNotAvailable),
                           start_up = Narrow(log_texts::kInvokedByProduct),
                           by_user = Narrow(log_texts::kInvokedByUser);
  if (const auto utility = TextAfter(version, line)) {
    HeaderField(1).utility = OrNothing(*utility);
  } else if (const auto value = TextAfter(time, line)) {
    HeaderField(2).time = OrNothing(HeaderTime(*value));
  } else if (const auto product = TextAfter(build, line)) {
    HeaderField(3).product = OrNothing(*product == unread ? View() : *product);
  } else if (line.starts_with(mode)) {
    const View rights = Trim(line.substr(mode.size()));
    Header& header = HeaderField(4);
    if (rights.starts_with(admin) || rights.starts_with(user))
      header.administrator = rights.starts_with(admin);
    if (line.ends_with(start_up)) header.mode = "start-up";
    if (line.ends_with(by_user)) header.mode = "interactive";
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

/// A check begins with the entry of a retry, otherwise with its first frame line.
void LogReader::BeginCheck(std::wstring_view text) {
  const bool retry = text == update_texts::kRetry;
  if (!retry && text != update_texts::kEntriesStart) return;
  if (started_ || (retry && !run_.checks.empty())) run_.checks.push_back(run_.entries.size());
  started_ = !retry;
}

}  // namespace logcheck
