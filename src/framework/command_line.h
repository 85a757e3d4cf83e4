#pragma once

/// Receives the arguments of a command line, one call for each, program name left out.
class CCommandLineInfo {
 public:
  /// `text` is one argument, without its leading "/" or "-" when it is a switch.
  virtual void ParseParam(const wchar_t* text, bool is_switch, bool is_last) = 0;

 protected:
  CCommandLineInfo() = default;
  CCommandLineInfo(const CCommandLineInfo&) = default;
  CCommandLineInfo& operator=(const CCommandLineInfo&) = default;
  ~CCommandLineInfo() = default;
};

/// Hands `arguments` (the program name first, as the C runtime splits them) to `info`. Of one leading "/" or
/// "-" only the first character is taken off.
void ParseArguments(int count, const wchar_t* const* arguments, CCommandLineInfo& info);
