// One libFuzzer program for the parsers of what a server, a file or a log delivers: each of them takes every
// input. Environment: with TAVREL_SHOW an input is printed, as a column of a table has it; TAVREL_SEEDS names
// a folder for seeds.
#undef NDEBUG  // the rules are asserted
#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "log/log_rules.h"
#include "logcheck/log_reader.h"
#include "support/table.h"
#include "text/text.h"
#include "update/check_rules.h"
#include "update/section_names.h"

namespace {

using Text = std::wstring;
using View = std::wstring_view;

// Bytes above 0x7F stand for characters that are special to a parser.
Text Decode(const std::uint8_t* data, std::size_t size) {
  constexpr View beyond = L"\u0085\u00A0\u2000\u200A\u2028\u3000\u017F\u0663\u200B\uFEFF\uD7FF\uFFFF";
  Text result(data, data + size);
  for (wchar_t& c : result) c = c < 0x80 ? c : beyond[static_cast<std::size_t>(c) % beyond.size()];
  return result;
}

void Decisions(const Text& in) {
  std::vector<Text> list = Split(in);
  if (list.size() < 4) return;
  const Decision decision = DecideFor(in);
  const Text record = list[0];
  const std::int32_t version = text::ParseDecimal(list[1]);
  list.erase(list.begin(), list.begin() + 4);
  assert(!decision.delete_record || (CountRecordedPacks(list, record) + 1 == list.size() &&
                                     ParseRecordVersion(record).value_or(0) > version));
  assert(!decision.offered.value_or(false) || list.size() > 1);
  assert(decision.entries.empty() == !decision.offered);
  // A pack above all others is the newest, wherever the list ends.
  list.resize(std::max<std::size_t>(list.size(), 2));
  list.push_back(L"P_2147483647_2147483647");
  LatestPack latest;
  FindLatestPack(list, latest);
  assert(latest.level == INT32_MAX && latest.build == INT32_MAX);
}

void Lists(const Text& in) {
  const std::vector<Text> names = ReadSectionNames(Bytes(in));
  assert(std::count(in.begin(), in.end(), L'[') >= static_cast<std::ptrdiff_t>(names.size()));
  std::string again;
  Text buffer;
  bool plain = true;
  for (const Text& name : names) {
    assert(!name.empty() && name.find_first_of(Text(L"\r\n\0", 3)) == Text::npos);
    plain = plain && std::all_of(name.begin(), name.end(), [](wchar_t c) { return c > L' ' && c < 0x80; });
    again += "[" + Bytes(name) + "]\n";
    buffer += name + L'\0';
  }
  assert(!plain || ReadSectionNames(again) == names);
  std::vector<Text> whole;
  AppendSectionNames(View(buffer).substr(0, 15), whole);
  assert(CountWholeNames(names, 16) == whole.size());
}

void Logs(const Text& in) {
  const Text normal = log_rules::Normalise(in);
  assert(normal.empty() == in.empty() && normal.find(Text(in.size() / 9 + 2, L'\n')) == normal.npos);
  const std::string bytes = Bytes(in);
  const std::string lines = log_rules::WithLf(log_rules::WithCrLf(bytes));
  assert(lines == (bytes.empty() || bytes.back() == '\n' ? bytes : bytes + '\n'));
}

// Each line of a log is read at most once, and each check has advice. Blocks of any size give the same runs.
void LogRuns(const Text& in) {
  const std::string log = Bytes(in);
  std::string shown[2];
  for (std::string& each : shown) {
    std::size_t lines = 0;
    logcheck::LogReader reader([&](logcheck::Run& run) {
      Judge(run);
      lines += run.unknown_lines;
      for (const logcheck::Check& check : run.checks) {
        lines += check.entries.size();
        assert(!check.entries.empty() && check.advice.ends_with('.'));
        each += check.advice;
        for (const logcheck::Entry& entry : check.entries) each += entry.lines;
      }
      each += run.time.value_or("") + std::to_string(run.unknown_lines) + "\n";
    });
    const std::size_t block = &each == shown ? log.size() / 3 + 1 : log.size() + 1;
    for (std::size_t start = 0; start < log.size(); start += block)
      reader.Read(std::string_view(log).substr(start, block));
    reader.End();
    assert(lines <= log.size());
  }
  assert(shown[0] == shown[1]);
}

constexpr void (*kParsers[])(const Text&) = {Decisions, Lists, Logs, LogRuns};

/// A seed for each parser.
void WriteSeeds(const char* folder, const std::string& input) {
  static int number = 0;
  for (char parser = 0; parser < std::ssize(kParsers); ++parser)
    std::ofstream(folder + ("/" + std::to_string(++number)), std::ios::binary) << parser << input;
}

}  // namespace

/// Writes the seeds: the inputs of the unit tests' rows, and the entries of logs.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  const char* folder = std::getenv("TAVREL_SEEDS");
  if (folder == nullptr) return 0;
  for (const char* table : {"unit/rows.txt", "unit/section_names.txt"}) {
    for (const Row& row : ReadTable(table)) WriteSeeds(folder, Bytes(row.input));
  }
  for (const logcheck::TextGroup& group : logcheck::TextGroups()) {
    std::string log;
    for (const logcheck::Text& text : group.texts) log += Bytes(text.text) + " 2\n";
    WriteSeeds(folder, log);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Text in = Decode(data + 1, size - 1);
  if (std::getenv("TAVREL_SHOW")) std::puts(("row " + Literal(in)).c_str());
  std::fflush(stdout);
  kParsers[*data % std::size(kParsers)](in);
  return 0;
}
