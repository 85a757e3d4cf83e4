#include "framework/command_line.h"

void ParseArguments(int count, const wchar_t* const* arguments, CCommandLineInfo& info) {
  for (int i = 1; i < count; ++i) {
    const wchar_t* text = arguments[i];
    const bool is_switch = *text == L'/' || *text == L'-';
    info.ParseParam(is_switch ? text + 1 : text, is_switch, i + 1 == count);
  }
}
