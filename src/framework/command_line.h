#pragma once

/// Receives the arguments of a command line, without the program's name, one in each call.
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

/// Calls `info` for each of `arguments` but the first, the program's name. Only one leading "/" or "-" is
/// removed.
void ParseArguments(int count, const wchar_t* const* arguments, CCommandLineInfo& info);
