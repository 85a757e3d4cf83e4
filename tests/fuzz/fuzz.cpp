// One libFuzzer program for all parsers of the pure part. TAVREL_PARSER in the environment names one of the
// table at the end; without it the names are listed. TAVREL_SHOW prints each input as a row of the unit tests
// has it.
#undef NDEBUG  // the rules are asserted
#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/log_text.h"
#include "text/text.h"
#include "ui/launch_parameters.h"
#include "ui/log_saving.h"
#include "unit/literal.h"
#include "update/decision.h"
#include "update/pack_list.h"
#include "update/record_text.h"
#include "update/request_path.h"
#include "update/section_names.h"

namespace {

using Text = std::wstring;
using View = std::wstring_view;
using Wide = __int128;  // holds every number of these tests exactly

const Text kBlanks =
    L"\t\n\v\f\r "
    L"\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u2028\u2029"
    L"\u202F\u205F\u3000";

// Bytes above 0x7F stand for the characters that the parsers could stumble on.
Text Decode(const std::uint8_t* data, std::size_t size) {
  const Text beyond = kBlanks + L"\u017F\u0663\u200B\uFEFF\uD7FF\uFFFF";
  Text result(data, data + size);
  for (wchar_t& c : result) c = c < 0x80 ? c : beyond[static_cast<std::size_t>(c) % beyond.size()];
  return result;
}

Text TakeFirst(std::vector<Text>& parts) {
  if (parts.empty()) return {};
  Text first = parts.front();
  parts.erase(parts.begin());
  return first;
}

bool Contains(const Text& text, const Text& part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end()) != text.end() || part.empty();
}

std::int32_t Clamp(Wide value) {
  return static_cast<std::int32_t>(std::min<Wide>(std::max<Wide>(value, INT32_MIN), INT32_MAX));
}

void Trimming(const Text& in) {
  const View result = text::Trim(in);
  const std::size_t first = in.find_first_not_of(kBlanks);
  assert(result ==
         (first == Text::npos ? Text() : in.substr(first, in.find_last_not_of(kBlanks) - first + 1)));
}

void Booleans(const Text& in) {
  const auto is = [&in](View upper, View lower) {
    bool same = in.size() == upper.size();
    for (std::size_t i = 0; same && i < in.size(); ++i) same = in[i] == upper[i] || in[i] == lower[i];
    return same;
  };
  assert(text::IsTrueText(in) == is(L"TRUE", L"true"));
  assert(text::IsBooleanText(in) == (is(L"TRUE", L"true") || is(L"FALSE", L"false")));
}

void Numbers(const Text& in) {
  std::vector<Wide> numbers(4);
  std::vector<Text> fields = Split(in);
  fields.resize(4);
  for (std::size_t i = 0; i < 4; ++i) {
    const Text& field = fields[i];
    std::size_t at = std::min(field.find_first_not_of(kBlanks), field.size());
    const bool negative = field.substr(at, 1) == L"-";
    if (negative || field.substr(at, 1) == L"+") ++at;
    // Leading zeros apart, more than ten digits are out of range, and up to ten are exact.
    const std::size_t end = std::min(field.find_first_not_of(L"0123456789", at), field.size());
    const std::size_t start = std::min(field.find_first_not_of(L'0', at), end);
    Wide value = 0;
    for (std::size_t digit = start; digit < end; ++digit)
      value = end - start > 10 ? Wide{1} << 40 : value * 10 + (field[digit] - L'0');
    numbers[i] = Clamp(negative ? -value : value);
    assert(text::ParseDecimal(field) == numbers[i]);
    assert(text::SecondsToMilliseconds(text::ParseDecimal(field)) == Clamp(numbers[i] * 1000));
  }
  const auto n = [&numbers](std::size_t i) { return static_cast<std::int32_t>(numbers[i]); };
  assert(text::FoldVersion(n(0), n(1), n(2), n(3)) ==
         Clamp(numbers[0] * 1000 + numbers[1] * 100 + numbers[2] * 10 + numbers[3]));
}

void Replacing(const Text& in) {
  std::vector<Text> parts = Split(in);
  const Text from = TakeFirst(parts), to = TakeFirst(parts), whole = TakeFirst(parts);
  Text result = whole, expected;
  std::size_t expected_count = 0;
  for (std::size_t i = 0; i < whole.size();) {
    const bool here = !from.empty() && whole.compare(i, from.size(), from) == 0;
    expected += here ? to : Text(1, whole[i]);
    expected_count += here;
    i += here ? from.size() : 1;
  }
  assert(text::ReplaceAll(result, from, to) == expected_count);
  assert(result == expected);
  Text log = whole;
  log_text::ReplaceBuildLine(log, from, to);
  assert(log == whole || (Contains(whole, from) && Contains(from, L"NA")));
}

void Paths(const Text& in) {
  const text::SplitPath split = text::SplitAtLastBackslash(in);
  assert(split.has_backslash ? Text(split.folder) + L'\\' + Text(split.file) == in : !Contains(in, L"\\"));
  assert(split.file.find(L'\\') == View::npos);
  assert(LaunchParameters(in) == L"/c \"" + in + L" /update\"");
  const auto saved = SavedLogPath(in);
  assert(saved ? (*saved == in || *saved == in + L".txt") && saved->ends_with(L".txt") : Contains(in, L"."));
}

void Packs(const Text& in) {
  const std::vector<Text> sections = Split(in);
  LatestPack latest{4, 4};
  FindLatestPack(sections, latest);
  std::pair best{INT32_MIN, INT32_MIN};
  std::int32_t level = 0;
  bool any = false;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    const std::vector<Text> fields = Split(sections[i], L'_');
    if (fields.size() < 2) continue;
    if (fields.size() > 2) level = text::ParseDecimal(fields[fields.size() - 2]);
    if (sections.size() == 2 && fields.size() == 2) level = 4;
    best = std::max(best, {level, text::ParseDecimal(fields.back())});
    any = true;
  }
  if (!any || (sections.size() != 2 && std::min(best.first, best.second) < 1)) best = {4, 4};
  assert(std::pair(latest.level, latest.build) == best);
  const std::pair installed{level, std::int32_t{7}};
  assert(IsNewer(latest, installed.first, installed.second) == (installed < best));
}

void Records(const Text& in) {
  std::vector<Text> sections = Split(in);
  const Text record = TakeFirst(sections);
  std::size_t count = 0;
  for (std::size_t i = 1; i < sections.size(); ++i) count += Contains(record, sections[i]);
  assert(CountRecordedPacks(sections, record) == count);

  // The name holds no underscore, so it stands in one field, with the version's first number behind it.
  std::vector<Text> fields = Split(record, L'_');
  const Text name = Contains(record, L"Varnexa") ? L"Varnexa" : L"varnexa";
  std::optional<std::int32_t> expected;
  if (fields.size() == 4 && Contains(fields[0], name)) {
    fields[0].erase(0, fields[0].find(name) + name.size());
    Wide sum = 0;
    for (const Text& field : fields) sum = sum * 10 + text::ParseDecimal(field);
    expected = Clamp(sum);
  }
  assert(ParseRecordVersion(record) == expected);
}

// The record ("-": none), the two numbers of the executable (one of them missing: unknown), the list.
void Decisions(const Text& in) {
  std::vector<Text> list = Split(in);
  const Text record = TakeFirst(list), level = TakeFirst(list), build = TakeFirst(list);
  CheckFacts facts{list, {2, 7}, record, 15027, level, build};
  if (record == L"-") facts.record.reset();
  const Decision decision = Decide(facts, L"gone");
  const std::size_t start = std::min(record.find_first_not_of(kBlanks), record.size());
  const Text content = record.substr(start, record.find_last_not_of(kBlanks) + 1 - start);
  const bool packs = list.size() > 1;
  assert(decision.exit_code == (record == L"-" ? 3 : content.empty() || !packs ? 2 : 1));
  std::size_t named = 0;
  for (std::size_t i = 1; i < list.size(); ++i) named += Contains(content, list[i]);
  const bool covers = decision.exit_code == 1 && named + 1 == list.size();
  assert(decision.record_covers_list == covers);
  const std::pair installed{text::ParseDecimal(level), text::ParseDecimal(build)};
  const bool newer = installed < std::pair{2, 7};
  const bool ahead = covers && ParseRecordVersion(record).value_or(0) > 15027;
  const bool known = !packs || covers || (!level.empty() && !build.empty());
  assert(decision.removal.has_value() == ahead);
  assert(decision.offered.has_value() == known);
  assert(!known || *decision.offered == (packs && (covers ? ahead : newer)));
  assert(decision.entries.size() == (!known                                            ? 0u
                                     : *decision.offered || (!packs && record != L"-") ? 1u
                                                                                       : 2u));
}

void Requests(const Text& in) {
  std::vector<Text> parts = Split(in);
  const Text host = TakeFirst(parts), address = TakeFirst(parts);
  const auto path = RequestPath(address, host);
  const auto found = std::search(address.begin(), address.end(), host.begin(), host.end());
  assert(path.has_value() == (found != address.end() || host.empty()));
  if (!path) return;
  Text expected(found, address.end());
  assert(*path == expected.erase(0, host.size() + 1));
}

void Sections(const Text& in) {
  std::vector<Text> names;
  AppendSectionNames(in, names);
  Text walked;
  for (const Text& name : names) walked += name + L'\0';
  assert(std::count(names.begin(), names.end(), Text()) == 0);
  assert(in.compare(0, walked.size(), walked) == 0);
  const Text rest = in.substr(walked.size());
  assert(rest.empty() || rest[0] == L'\0' || !Contains(rest, Text(1, L'\0')));
}

void Lists(const Text& in) {
  const std::vector<Text> names = ReadSectionNames(std::string(in.begin(), in.end()));
  assert(std::count(in.begin(), in.end(), L'[') >= static_cast<std::ptrdiff_t>(names.size()));
  std::string again;
  Text buffer;
  bool plain = true;
  for (const Text& name : names) {
    assert(!name.empty() && name.find_first_of(Text(L"\r\n\0", 3)) == Text::npos);
    plain = plain && std::all_of(name.begin(), name.end(), [](wchar_t c) { return c > L' ' && c < 0x80; });
    again += "[" + std::string(name.begin(), name.end()) + "]\n";
    buffer += name + L'\0';
  }
  assert(!plain || ReadSectionNames(again) == names);
  std::vector<Text> whole;
  AppendSectionNames(View(buffer).substr(0, 15), whole);
  assert(CountWholeNames(names, 16) == whole.size());
}

void Logs(const Text& in) {
  Text expected;
  for (std::size_t i = 0; i < in.size();) {
    const std::size_t run = std::min(in.find_first_not_of(L'\n', i), in.size()) - i;
    const std::size_t after = ((run / 3 + run % 3 + 1) / 2 + 1) / 2;
    assert(run > 10 || after <= 1);
    expected += run == 0 ? Text(1, in[i]) : Text(after, L'\n');
    i += std::max<std::size_t>(run, 1);
  }
  assert(log_text::Normalise(in) == expected);

  const std::string bytes(in.begin(), in.end());
  const std::string file = log_text::WithCrLf(bytes);
  assert(log_text::WithLf(file) == (bytes.empty() || bytes.back() == '\n' ? bytes : bytes + '\n'));
  assert(EditText(in).size() ==
         in.size() + static_cast<std::size_t>(std::count(in.begin(), in.end(), L'\n')));
  const std::string lines = log_text::WithLf(bytes);
  assert(lines.empty() == bytes.empty() && (lines.empty() || lines.back() == '\n'));
}

const struct {
  const char* name;
  void (*check)(const Text&);
} kParsers[] = {{"trimming", Trimming},   {"booleans", Booleans},   {"numbers", Numbers},
                {"replacing", Replacing}, {"paths", Paths},         {"packs", Packs},
                {"records", Records},     {"decisions", Decisions}, {"requests", Requests},
                {"sections", Sections},   {"lists", Lists},         {"logs", Logs}};

void (*chosen_check)(const Text&) = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* const wanted = std::getenv("TAVREL_PARSER");
  for (const auto& parser : kParsers) {
    if (!wanted) std::puts(parser.name);
    if (wanted && std::strcmp(wanted, parser.name) == 0) chosen_check = parser.check;
  }
  if (!chosen_check) std::exit(wanted ? 2 : 0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Text in = Decode(data, size);
  if (std::getenv("TAVREL_SHOW")) std::puts(("row " + Literal(in)).c_str());
  std::fflush(stdout);
  chosen_check(in);
  return 0;
}
