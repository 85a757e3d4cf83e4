#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Replacing functions of the system in this program: in its own import table, and those that it looks up by
/// name. Product code is linked into the test program, so its calls go the same ways; code inside the
/// system's DLLs is not touched.
namespace support {

/// Where calls of one function go. `dll` is empty for a function that is looked up by name; an import by
/// ordinal is named "#ordinal".
struct ImportSlot {
  std::string dll;
  std::string name;
  void** address = nullptr;
};

/// Every entry of the import table, in its order, of this program or of another module.
std::vector<ImportSlot> AllImports(HMODULE module = nullptr);
/// Every function that this program has looked up by name so far, or that FindImport was asked for.
std::vector<ImportSlot> LateImports();
/// The entry for `name` ("InternetOpenW") of any DLL. Ends the program with a message when it neither imports
/// such a function nor can look it up, because a test with a hook that replaces nothing could not fail.
void** FindImport(std::string_view name);
/// Puts `function` into the entry and returns the previous one.
void* ExchangeImport(void** slot, void* function);

/// Sets the last error and returns `result`, as a failing function does.
template <class Result>
Result Fail(DWORD error, Result result) {
  SetLastError(error);
  return result;
}

/// Replaces one function while the object exists by anything that can be called with its arguments. One hook
/// for each function at a time. `original()` is the function that was replaced.
///
///   ImportHook<InternetOpenW> hook("InternetOpenW", [&](auto...) { ++calls; return nullptr; });
template <auto Function, class Type = decltype(Function)>
class ImportHook;

template <auto Function, class Result, class... Arguments>
class ImportHook<Function, Result(WINAPI*)(Arguments...)> {
 public:
  ImportHook(std::string_view name, std::function<Result(Arguments...)> replacement)
      : slot_(FindImport(name)) {
    replacement_ = std::move(replacement);
    original_ = ExchangeImport(slot_, reinterpret_cast<void*>(&Enter));
  }
  /// Fails every call with this last error and result.
  template <class Failure = Result>
  ImportHook(std::string_view name, DWORD error, Failure result = {})
      : ImportHook(name, [=](Arguments...) { return Fail(error, result); }) {}
  ImportHook(const ImportHook&) = delete;
  ~ImportHook() { ExchangeImport(slot_, original_); }

  Result original(Arguments... arguments) const {
    return reinterpret_cast<Result(WINAPI*)(Arguments...)>(original_)(arguments...);
  }

 private:
  static Result WINAPI Enter(Arguments... arguments) { return replacement_(arguments...); }

  static inline std::function<Result(Arguments...)> replacement_;
  void** slot_;
  void* original_ = nullptr;
};

}  // namespace support
