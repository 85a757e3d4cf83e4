#pragma once

#include <windows.h>

#include <bit>
#include <type_traits>

/// Windows' own libraries that a run may do without, or that a file of the same name beside the program must
/// not take the place of: loaded by name when one of their functions is first called, not with the program.
namespace platform {

/// From here on libraries are looked for in the system's folder alone, side-by-side assemblies of the
/// manifest first. A Windows 7 without the update that brought this goes on without it.
void SearchSystemFolderOnly();

/// One library; stays loaded until the process ends.
class SystemLibrary {
 public:
  /// `name`: bare file name, so that the manifest's choice of a version counts.
  constexpr explicit SystemLibrary(const wchar_t* name) : name_(name) {}

  /// The function's address; null, with the last error set, when the library or the function is not there.
  FARPROC Find(const char* function);

 private:
  const wchar_t* name_;
  HMODULE module_ = nullptr;
};

template <class Type>
class SystemFunction;

/// One function, called like itself:
///
///   SystemFunction<decltype(&::InternetOpenW)> InternetOpenW{wininet, "InternetOpenW"};
///
/// Looked up by its first call. Where it is not found a call answers as a failing one does: `failure`, and
/// the last error says why. Used on one thread at a time.
template <class Result, class... Arguments>
class SystemFunction<Result(WINAPI*)(Arguments...)> {
 public:
  using Failure = std::conditional_t<std::is_void_v<Result>, int, Result>;

  constexpr SystemFunction(SystemLibrary& library, const char* name, Failure failure = {})
      : library_(library), name_(name), failure_(failure) {}

  bool IsThere() {
    if (function_ == nullptr) function_ = std::bit_cast<Type>(library_.Find(name_));
    return function_ != nullptr;
  }
  Result operator()(Arguments... arguments) {
    return IsThere() ? function_(arguments...) : static_cast<Result>(failure_);
  }

 private:
  using Type = Result(WINAPI*)(Arguments...);

  SystemLibrary& library_;
  const char* name_;
  Failure failure_;
  Type function_ = nullptr;
};

}  // namespace platform
