// The main function of every console tool.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "console/command_line.h"
#include "console/text.h"

#ifdef __MINGW32__
// Makes the C runtime expand "*" and "?" in arguments, which cmd does not do. (MSVC: setargv in
// CMakeLists.txt.)
extern "C" {
int _dowildcard = -1;  // NOLINT(bugprone-reserved-identifier): the runtime's name
}
#endif

#ifdef _WIN32
int wmain(int count, wchar_t** arguments) {
  const auto utf8 = [](const wchar_t* argument) { return console::Utf8(argument); };
#else
int main(int count, char** arguments) {
  const auto utf8 = [](const char* argument) { return std::string(argument); };
#endif
  try {
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(utf8(arguments[i]));
    return console::RunTool(texts);
  } catch (const std::exception& error) {
    console::Write(std::cerr,
                   console::Printable(std::string_view(error.what())) + "; the program cannot go on\n");
    return console::kFailed;
  }
}
