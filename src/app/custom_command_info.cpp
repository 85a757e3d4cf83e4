#include "app/custom_command_info.h"

#include <windows.h>

void CustomCommandInfo::ParseParam(const wchar_t* text, bool /*is_switch*/, bool /*is_last*/) {
  if (lstrcmpiW(text, L"2") == 0) RegularMode = 0;
}
