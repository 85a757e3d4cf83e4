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
  const char* function;
  std::wstring subject;      ///< the first text among its arguments: a path, a key, a value's name
  int nth;                   ///< counted among the calls of this function with this subject, from 1
  std::vector<DWORD> codes;  ///< to fail with
  DWORD code;                ///< that it was made to fail with, or 0
};

struct Fault {
  std::size_t call;  ///< counted from 0 in the order of the run
  DWORD code;
};
struct Plan {
  std::vector<Fault> faults;
  bool from_then_on = false;  ///< the first fault's function fails for the rest of the run as well
};

struct Run {
  std::vector<Call> calls;
  std::string disorder;  ///< handles left open, closed twice or by the wrong function
};
/// Calls `act` with `plan` in force. Only calls of this thread count.
Run Perform(const Plan& plan, const std::function<void()>& act);
/// Imports of a program that touch files, the registry, the network or security and that no line of the table
/// of functions covers.
std::string UncoveredImports(const wchar_t* program);

/// What a scene left behind.
struct Outcome {
  std::wstring said;   ///< its log entries and messages; what changes with the clock is left out
  std::wstring state;  ///< everything else that must be as in a run without failures
  bool operator==(const Outcome&) const = default;
};
using Files = std::map<std::wstring, std::string>;  ///< path below the machine's folder, content

struct Scene {
  char letter;  ///< by which the rules name it
  const char* name;
  void (*arrange)(support::Machine&);  ///< on top of what every scene finds
  Outcome (*act)(support::Machine&);
  std::vector<std::wstring> owns;  ///< ends of the paths that it may change
  /// What holds whatever fails; the complaint, empty without one.
  std::string (*judge)(const Outcome&, const Files& before, const Files& after);
};
const std::vector<Scene>& Scenes();
/// What every scene finds: settings, a registered product with its executable, logs, and strangers' files.
void Furnish(support::Machine& machine);
inline constexpr char kServedList[] = "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n";

}  // namespace sweep
