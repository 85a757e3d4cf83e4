#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/machine.h"

/// Failing imported functions of this program one call at a time, and counting the handles they open and
/// close.
namespace sweep {

struct Call {
  std::wstring function;
  std::wstring subject;      ///< the first text among its arguments: a path, a key, a value's name
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

/// A part of a run that the sweep repeats with failing calls.
struct Scene {
  std::string name;
  bool pairs = false;                      ///< two calls fail as well
  void (*arrange)(support::Machine&);      ///< on top of what every scene finds
  std::wstring (*act)(support::Machine&);  ///< returns its log, "-- " and the results
  /// What does not hold after a run, whatever failed; gets the log, "-- ", results and changed files.
  std::wstring (*broken)(const std::wstring& report) = nullptr;
  /// The permitted results, each followed by the changed files with their content; each occurs. "log:" stands
  /// for the log folder and the beginning of its files' names.
  std::vector<std::wstring> ends;
};
const std::vector<Scene>& Scenes();
/// Prepares what every scene finds: settings, a registered product with its executable, logs, and other
/// files.
void Prepare(support::Machine& machine);

}  // namespace sweep
