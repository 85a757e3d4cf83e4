#pragma once

#include <windows.h>

#include <bit>
#include <type_traits>

/// Windows libraries that are loaded at the first call of a function, not with the program: a run may not
/// need them, and a planted file of the same name must not win.
namespace platform {

/// Restricts the search for libraries to the system's folder; side-by-side assemblies of the manifest still
/// come first. Has no effect on a Windows 7 without update 2533623.
void SearchSystemFolderOnly();

/// One library; stays loaded until the process ends.
class SystemLibrary {
 public:
  /// `name`: file name without a folder, so that the manifest selects the version.
  constexpr explicit SystemLibrary(const wchar_t* name) : name_(name) {}

  /// The function's address; null, with the last error set, when the library or the function is not there.
  FARPROC Find(const char* function);

 private:
  const wchar_t* name_;
  HMODULE module_ = nullptr;
};

template <class Type>
class SystemFunction;

/// One function of a library, called like the original:
///
///   SystemFunction<decltype(&::InternetOpenW)> InternetOpenW{wininet, "InternetOpenW"};
///
/// The first call looks it up. A missing function behaves like a failed call: it returns `failure` with the
/// last error set. Not thread-safe.
template <class Result, class... Arguments>
class SystemFunction<Result(WINAPI*)(Arguments...)> {
 public:
  using Failure = std::conditional_t<std::is_void_v<Result>, int, Result>;

  constexpr SystemFunction(SystemLibrary& library, const char* name, Failure failure = {})
      : library_(library), name_(name), failure_(failure) {}

  bool IsAvailable() {
    if (function_ == nullptr) function_ = std::bit_cast<Type>(library_.Find(name_));
    return function_ != nullptr;
  }
  Result operator()(Arguments... arguments) {
    return IsAvailable() ? function_(arguments...) : static_cast<Result>(failure_);
  }

 private:
  using Type = Result(WINAPI*)(Arguments...);

  SystemLibrary& library_;
  const char* name_;
  Failure failure_;
  Type function_ = nullptr;
};

}  // namespace platform
