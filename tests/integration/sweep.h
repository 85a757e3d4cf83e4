#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// Failing imported functions of this program one call at a time, and counting the handles they open and
/// close.
namespace sweep {

struct Call {
  std::wstring function;
  std::vector<DWORD> codes;  ///< to fail with
  DWORD code;                ///< that it was made to fail with, or 0
};

struct Plan {
  std::map<std::size_t, DWORD>
      faults;                 ///< the numbers of calls, from 0 in the order of the run, and their codes
  bool from_then_on = false;  ///< a function that failed fails for the rest of the run as well
};

struct Run {
  std::vector<Call> calls;
  std::wstring disorder;  ///< handles left open, closed twice or by the wrong function
};
/// Calls `act` with `plan` in force. Only calls of this thread count.
Run Perform(const Plan& plan, const std::function<void()>& act);
/// Imports of a program, and what was looked up by name in this one, that touch files, the registry, the
/// network or security and that no row of the table of functions covers.
std::string UncoveredImports(const wchar_t* program);

}  // namespace sweep
