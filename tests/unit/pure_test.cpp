#include "framework/command_line.h"
#include "log/log_file_choice.h"
#include "log/log_text.h"
#include "text/text.h"
#include "ui/launch_parameters.h"
#include "ui/log_saving.h"
#include "ui/page_state.h"
#include "unit.h"
#include "update/pack_list.h"
#include "update/record_text.h"
#include "update/request_path.h"
#include "update/section_names.h"

namespace {

using Text = std::wstring;
using View = std::wstring_view;

// Writes down the calls: "/" before a switch, "!" behind the last argument.
class Recorder : public CCommandLineInfo {
 public:
  Text calls;
  void ParseParam(const wchar_t* text, bool is_switch, bool is_last) override {
    calls.append(is_switch ? L"[/" : L"[").append(text).append(is_last ? L"!]" : L"]");
  }
};

Text Fold(View version) {
  std::vector<std::int32_t> n;
  for (const Text& field : Split(version, L'.')) n.push_back(text::ParseDecimal(field));
  return std::to_wstring(text::FoldVersion(n[0], n[1], n[2], n[3]));
}

Text Parse(View in) {
  const std::vector<Text> arguments = Split(in);
  std::vector<const wchar_t*> pointers;
  for (const Text& argument : arguments) pointers.push_back(argument.c_str());
  Recorder recorder;
  ParseArguments(static_cast<int>(pointers.size()), pointers.data(), recorder);
  return recorder.calls;
}

Text Newest(View sections) {
  LatestPack latest{4, 4};
  FindLatestPack(Split(sections), latest);
  return std::to_wstring(latest.level) + L'.' + std::to_wstring(latest.build);
}

Text Names(View buffer) {
  std::vector<Text> names{L"before"};
  AppendSectionNames(buffer, names);
  Text joined;
  for (const Text& name : names) joined.append(name).append(L"|");
  return joined;
}

Text Page(bool interactive, View in) {
  const std::vector<Text> parts = Split(in);
  const auto has = [&parts](wchar_t flag) { return parts[0].find(flag) != Text::npos; };
  const auto error = [&parts](const wchar_t* whose) {
    return parts[1].empty() ? Text() : L" Error : " + parts[1] + whose;
  };
  const PageState state = DecidePageState(
      {interactive, has('i'), has('f'), has('x'), error(L" (sheet)"), has('X'), error(L" (page)"), has('F')});
  return Text(state.install_enabled ? L"I" : L"") + (state.retry_enabled ? L"R" : L"") +
         (state.continue_offered ? L"C|" : L"|") + state.text;
}

// Applies a function of 8-bit texts to plain wide ones.
template <std::string Function(std::string_view)>
Text Widened(View value) {
  const std::string result = Function(std::string(value.begin(), value.end()));
  return Text(result.begin(), result.end());
}

}  // namespace

TEST_CASE("trimming forgets a Unicode blank, or takes off what is none") {
  CheckRows([](View in) { return Text(text::Trim(in)); });
}

TEST_CASE("a boolean text is taken for another, or with something around it") {
  CheckRows([](View value) {
    return Text(text::IsBooleanText(value) ? L"boolean" : L"") + (text::IsTrueText(value) ? L" true" : L"");
  });
  CHECK_FALSE((text::EqualsIgnoreCase(L"@", L"`") || text::EqualsIgnoreCase(L"[", L"{")));
}

TEST_CASE("a number overflows, or stops at the wrong character") {
  CheckRows([](View value) { return std::to_wstring(text::ParseDecimal(value)); });
}

TEST_CASE("seconds overflow on their way to milliseconds") {
  CheckRows(
      [](View value) { return std::to_wstring(text::SecondsToMilliseconds(text::ParseDecimal(value))); });
}

TEST_CASE("version folding loses the overlap of its fields, or overflows") {
  CheckRows(Fold);
}

TEST_CASE("a path is cut at the wrong place") {
  CheckRows([](View path) {
    const text::SplitPath split = text::SplitAtLastBackslash(path);
    return Text(split.has_backslash ? L"" : L"none").append(split.folder).append(L"|").append(split.file);
  });
}

TEST_CASE("an argument is lost, stripped twice, or not known as the last") {
  CheckRows(Parse);
}

TEST_CASE("the newest pack is not found, or a list without one changes the result") {
  CheckRows(Newest);
}

TEST_CASE("a newer pack is taken for an older one") {
  CheckRows([](View installed) {
    const std::vector<Text> parts = Split(installed, L'.');
    return Text(IsNewer({2, 7}, text::ParseDecimal(parts[0]), text::ParseDecimal(parts[1])) ? L"newer" : L"");
  });
}

TEST_CASE("a recorded pack is not recognised, or a heading counts as one") {
  CheckRows([](View in) {
    const View list = in.substr(in.find(L'|') + 1);
    return std::to_wstring(CountRecordedPacks(Split(list), in.substr(0, in.find(L'|'))));
  });
}

TEST_CASE("a record's version is misread, or read where there is none") {
  CheckRows([](View record) {
    const auto version = ParseRecordVersion(record);
    return version ? std::to_wstring(*version) : Text(L"none");
  });
}

TEST_CASE("the request asks for another file than the registered one") {
  CheckRows([](View address) { return Text(RequestPath(address, L"up.example").value_or(L"none")); });
}

TEST_CASE("a section name is lost at the buffer's end, or a cut one is kept") {
  CheckRows(Names);
}

TEST_CASE("blank lines stay between the entries of the file") {
  CheckRows([](View in) { return log_text::Normalise(Text(in)); });
}

TEST_CASE("the build line is missed in the log, or another NA is replaced") {
  CheckRows([](View in) {
    std::vector<Text> parts = Split(in);
    log_text::ReplaceBuildLine(parts[1], L"Varnexa 15.0 Build Version : NA", parts[0]);
    return parts[1];
  });
}

TEST_CASE("a line's end is lost on its way to the file") {
  CheckRows(Widened<log_text::WithCrLf>);
}

TEST_CASE("a line's end is lost on its way to the edit control") {
  CheckRows(EditText);
}

TEST_CASE("a line's end is doubled on its way from the file") {
  CheckRows(Widened<log_text::WithLf>);
}

TEST_CASE("a foreign file is taken for a log, or a log is overlooked") {
  CheckRows([](View name) { return Text(log_text::IsLogFileName(name) ? L"log" : L"other"); });
}

TEST_CASE("the run's log goes into the wrong one of several files") {
  CheckRows([](View times) {
    std::vector<LogFileEntry> files;
    for (const wchar_t c : times) files.push_back({L"", static_cast<std::uint64_t>(c) << 48});
    const auto chosen = ChooseLogFile(files);
    return chosen ? std::to_wstring(*chosen) : Text(L"new");
  });
}

TEST_CASE("a log is saved under a name with a wrong extension") {
  CheckRows([](View path) { return SavedLogPath(path).value_or(L"none"); });
}

TEST_CASE("the page of the regular mode tells of another result than its check's") {
  CheckRows([](View in) { return Page(true, in); });
}

TEST_CASE("the page of patch verification forgets a found update or hides a failure") {
  CheckRows([](View in) { return Page(false, in); });
}

TEST_CASE("the installer's file name is quoted by itself, or its switch stands outside the quotes") {
  CheckRows(LaunchParameters);
}
