#include "log/log_file_choice.h"
#include "log/log_text.h"
#include "ui/log_saving.h"
#include "unit.h"

namespace {

// Applies a function of 8-bit texts to plain wide ones.
std::wstring Widened(std::string (*function)(std::string_view), std::wstring_view value) {
  const std::string result = function(std::string(value.begin(), value.end()));
  return std::wstring(result.begin(), result.end());
}

}  // namespace

TEST_CASE("blank lines stay between the entries of the file") {
  // Newlines in a row: three passes make one of up to ten, and of twelve.
  CheckRows({L"1 => 1", L"2 => 1", L"3 => 1", L"4 => 1", L"5 => 1", L"6 => 1", L"7 => 1", L"8 => 1",
             L"9 => 1", L"10 => 1", L"11 => 2", L"12 => 1", L"13 => 2", L"27 => 3"},
            [](std::wstring_view count) {
              const std::wstring text(std::stoul(std::wstring(count)), L'\n');
              return std::to_wstring(log_text::Normalise(text).size());
            });
  CHECK(log_text::Normalise(L"\n\na\n\n\n\nb\r\n\r\nc") == L"\na\nb\r\n\r\nc");
}

TEST_CASE("the build line is missed in the log, or another NA is replaced") {
  CheckRows({L"15.0.2.7|T\nVarnexa 15.0 Build Version : NA\nUser Mode: NA => T\nVarnexa 15.0 Build Version : "
             L"15.0.2.7\nUser Mode: NA",
             L"|Varnexa 15.0 Build Version : NAVarnexa 15.0 Build Version : NA => Varnexa 15.0 Build Version "
             L": Varnexa 15.0 Build Version : ",
             L"NANA|Varnexa 15.0 Build Version : NA => Varnexa 15.0 Build Version : NANA",
             L"3.4|Varnexa 15.0 Build Version : 1.2 => Varnexa 15.0 Build Version : 1.2"},
            [](std::wstring_view in) {
              std::vector<std::wstring> parts = Split(in);
              log_text::ReplaceBuildLine(parts[1], L"Varnexa 15.0 Build Version : NA", parts[0]);
              return parts[1];
            });
}

TEST_CASE("a line's end is doubled or lost between memory, file and edit control") {
  const auto written = {L" => "sv, L"a => a"sv, L"a\n\nb\n => a\r\n\r\nb\r\n"sv, L"a\r\n => a\r\r\n"sv,
                        L"\0\n => \0\r\n"sv};
  CheckRows(written, EditText);
  CheckRows(written, [](std::wstring_view text) { return Widened(log_text::WithCrLf, text); });
  CheckRows({L" => ", L"a => a\n", L"a\r\nb => a\nb\n", L"a\nb\n => a\nb\n", L"\r\n => \n", L"\r\r\n => \r\n",
             L"a\rb => a\rb\n", L"a\r => a\r\n", L"\n\r\n => \n\n", L"\0 => \0\n"sv},
            [](std::wstring_view file) { return Widened(log_text::WithLf, file); });
}

TEST_CASE("a foreign file is taken for a log, or a log is overlooked") {
  CheckRows({L"QRT_15_SystemTavrel_07Mar2025_09_41_AM.log => log", L"x_QRT_15_SystemTavrel_old.log => log",
             L"x_qrt_15_systemtavrel_old.log => other", L"QRT_15_SystemTavrel.log => other", L" => other"},
            [](std::wstring_view name) { return log_text::IsLogFileName(name) ? L"log"sv : L"other"sv; });
}

TEST_CASE("the run's log goes into the wrong one of several files") {
  // One digit is one file's time; the result is the index of the chosen one.
  CheckRows({L" => new", L"0 => 0", L"12 => 1", L"91 => 0", L"22 => new", L"133 => 2", L"331 => 1",
             L"312 => 0", L"132 => 1", L"0000 => 3", L"44142 => 3"},
            [](std::wstring_view times) {
              std::vector<LogFileEntry> files;
              for (const wchar_t c : times) files.push_back({L"", static_cast<std::uint64_t>(c) << 48});
              const auto chosen = ChooseLogFile(files);
              return chosen ? std::to_wstring(*chosen) : L"new";
            });
}

TEST_CASE("a log is saved under a name with a wrong extension") {
  CheckRows({L"C:\\log => C:\\log.txt", L"C:\\my.logs\\log => C:\\my.logs\\log.txt",
             L"C:\\log.txt => C:\\log.txt", L"C:\\log.1.txt => C:\\log.1.txt", L".txt => .txt",
             L"C:\\log.TXT => none", L"C:\\log.txt.bak => none", L"C:\\log. => none", L"C:\\log.tx => none"},
            [](std::wstring_view path) { return SavedLogPath(path).value_or(L"none"); });
}
