#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Failing imported functions of this program one call at a time, and counting the handles they open and
/// close.
namespace sweep {

/// What a handle is closed with.
enum class Kind { none, object, find, key, sid, internet };
/// How a function tells that it failed: a null result, INVALID_HANDLE_VALUE and its like, the error code
/// itself, or the code as an HRESULT. The last error is set in every case.
enum class Answer { zero, minus_one, code, hresult };

struct Function {
  const char* name;
  void* hook;
  void** original;
  const Function** self;
  Answer answer;
  std::vector<DWORD> codes;  ///< codes to fail with; none: the function is only watched
  Kind opens = Kind::none;
  Kind closes = Kind::none;
  bool never_called = false;  ///< answers 1 instead of doing what it does
};

/// Imports of the program `program` from the DLLs that the table of functions covers which nobody has judged:
/// a function that it begins to call gets its line in that table or among those that cannot fail.
std::vector<std::string> UnjudgedImports(const wchar_t* program);

struct Call {
  const Function* function;
  std::wstring subject;  ///< the first text among its arguments: a path, a key, a value's name
  int nth;               ///< counted among the calls of this function with this subject, from 1
  DWORD code;            ///< that it was made to fail with, or 0
};

/// Which calls fail: by number, counted from 0 in the order of the run.
struct Fault {
  std::size_t call;
  DWORD code;
};
struct Plan {
  std::vector<Fault> faults;
  bool from_then_on = false;  ///< the first fault's function fails for the rest of the run as well
};

struct Run {
  std::vector<Call> calls;            ///< of functions that can fail
  std::vector<std::string> disorder;  ///< handles left open, closed twice or by the wrong function
};
/// Calls `act` with `plan` in force. Only calls of this thread count.
Run Perform(const Plan& plan, const std::function<void()>& act);

}  // namespace sweep
