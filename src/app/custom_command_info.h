#pragma once

#include "framework/command_line.h"

/// The program's one parameter: "2" anywhere on the command line selects patch verification mode. No other
/// parameter has any effect.
class CustomCommandInfo : public CCommandLineInfo {
 public:
  int RegularMode = 1;  ///< 0 once the parameter was met

  void ParseParam(const wchar_t* text, bool is_switch, bool is_last) override;
};
