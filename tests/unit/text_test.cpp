#include "text/text.h"

#include "framework/command_line.h"
#include "unit.h"

namespace {

// Writes down the calls: "/" before a switch, "!" behind the last argument.
class Recorder : public CCommandLineInfo {
 public:
  std::wstring calls;
  void ParseParam(const wchar_t* text, bool is_switch, bool is_last) override {
    calls.append(is_switch ? L"[/" : L"[").append(text).append(is_last ? L"!]" : L"]");
  }
};

}  // namespace

TEST_CASE("trimming forgets a Unicode blank, or takes off what is none") {
  CheckRows({L" => ", L" \t\v\f\r\n => ", L"\t a b\r\n => a b", L"\0\t => \0"sv, L"\u202F\u205F\u3000 => ",
             L"\u200Bx\uFEFF => \u200Bx\uFEFF", L"\u00A0\u0085\u1680\u2000x\u200A\u2028\u2029 => x"},
            text::Trim);
}

TEST_CASE("a boolean text is taken for another, or with something around it") {
  CheckRows({L"TRUE => boolean true", L"tRuE => boolean true", L"FALSE => boolean ", L"fAlse => boolean ",
             L" => ", L" TRUE => ", L"TRUE  => ", L"TRUEX => ", L"TRU => ", L"YES => ", L"1 => ",
             L"FAL\u017FE => ", L"TRUE\0 => "sv},
            [](std::wstring_view value) {
              const std::wstring result = text::IsBooleanText(value) ? L"boolean " : L"";
              return text::IsTrueText(value) ? result + L"true" : result;
            });
  CHECK_FALSE((text::EqualsIgnoreCase(L"@", L"`") || text::EqualsIgnoreCase(L"[", L"{")));
}

TEST_CASE("a number overflows, or stops at the wrong character") {
  CheckRows(
      {L" => 0", L"- => 0", L"abc => 0", L"x7 => 0", L"+-7 => 0", L"- 7 => 0", L"0x10 => 0", L"\u0663 => 0",
       L"2.5 => 2", L"007z => 7", L" \t+7 8 => 7", L"\u3000-1 => -1", L"2147483647 => 2147483647",
       L"2147483648 => 2147483647", L"99999999999999999999999999 => 2147483647",
       L"-2147483647 => -2147483647", L"-2147483648 => -2147483648", L"-2147483649 => -2147483648",
       L"-99999999999999999999999999 => -2147483648"},
      [](std::wstring_view value) { return std::to_wstring(text::ParseDecimal(value)); });
}

TEST_CASE("seconds overflow on their way to milliseconds") {
  CheckRows({L"30 => 30000", L"0 => 0", L"-1 => -1000", L"2147483 => 2147483000", L"2147484 => 2147483647",
             L"2147483647 => 2147483647", L"-2147483 => -2147483000", L"-2147484 => -2147483648",
             L"-2147483648 => -2147483648"},
            [](std::wstring_view seconds) {
              return std::to_wstring(text::SecondsToMilliseconds(text::ParseDecimal(seconds)));
            });
}

TEST_CASE("version folding loses the overlap of its fields, or overflows") {
  CheckRows({L"15.0.0.36 => 15036", L"15.0.1.2 => 15012", L"15.0.0.12 => 15012", L"1.2.3.4 => 1234",
             L"65535.65535.65535.65535 => 72809385", L"2147484.0.0.0 => 2147483647",
             L"2147483647.2147483647.2147483647.2147483647 => 2147483647",
             L"-2147483648.-2147483648.-2147483648.-2147483648 => -2147483648",
             L"3000000.-9000000.0.0 => 2100000000"},
            [](std::wstring_view version) {
              std::vector<std::int32_t> n;
              for (const std::wstring& field : Split(version, L'.')) n.push_back(text::ParseDecimal(field));
              return std::to_wstring(text::FoldVersion(n[0], n[1], n[2], n[3]));
            });
}

TEST_CASE("a path is cut at the wrong place") {
  CheckRows({L"C:\\QRT 15\\Qrt.exe => C:\\QRT 15|Qrt.exe", L"C:\\QRT\\ => C:\\QRT|", L"\\ => |",
             L"\\Qrt.exe => |Qrt.exe", L"Qrt.exe => none|", L"C:/QRT/Qrt.exe => none|", L" => none|"},
            [](std::wstring_view path) {
              const text::SplitPath split = text::SplitAtLastBackslash(path);
              std::wstring result = split.has_backslash ? L"" : L"none";
              return result.append(split.folder).append(L"|").append(split.file);
            });
}

TEST_CASE("an argument is lost, stripped twice, or not known as the last") {
  CheckRows({L" => ", L"program => ", L"program|2 => [2!]", L"/program|-2 => [/2!]",
             L"program|/2|x => [/2][x!]", L"program|--2|//|a/b => [/-2][//][a/b!]", L"program||/ => [][/!]"},
            [](std::wstring_view in) {
              const std::vector<std::wstring> arguments = Split(in);
              std::vector<const wchar_t*> pointers;
              for (const std::wstring& argument : arguments) pointers.push_back(argument.c_str());
              Recorder recorder;
              ParseArguments(static_cast<int>(pointers.size()), pointers.data(), recorder);
              return recorder.calls;
            });
}
