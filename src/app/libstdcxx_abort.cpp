// What the language's runtime does where it cannot go on: the program ends at once and without a word. The
// runtime's own ends throw, which brings the unwinder, the printing of an exception's name and the locks of
// threads into a program that has no use for them, and show a box that a start by the product has to be
// spared. The tests keep the runtime's.
#include <windows.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

/// What abort() answers, too.
constexpr UINT kExitCode = 3;

[[noreturn]] void End() {
  TerminateProcess(GetCurrentProcess(), kExitCode);
  std::abort();
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* block = std::malloc(size != 0 ? size : 1)) return block;
  End();
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

#ifdef __GLIBCXX__
// NOLINTBEGIN(bugprone-reserved-identifier): the runtime's own names.

extern "C" void __cxa_pure_virtual() {
  End();
}

// The library keeps these in one object: one that is missing here shows as all of them defined twice.
namespace std {

void __throw_bad_alloc() {
  End();
}

void __throw_bad_array_new_length() {
  End();
}

void __throw_bad_function_call() {
  End();
}

void __throw_length_error(const char*) {
  End();
}

void __throw_logic_error(const char*) {
  End();
}

void __throw_out_of_range(const char*) {
  End();
}

void __throw_out_of_range_fmt(const char*, ...) {
  End();
}

#if _GLIBCXX_RELEASE >= 13
// From this release on texts keep one function in the library, in an object that throws and catches.
template void basic_string<char>::_M_replace_cold(char*, size_type, const char*, size_type, size_type);
template void basic_string<wchar_t>::_M_replace_cold(wchar_t*, size_type, const wchar_t*, size_type,
                                                     size_type);
#endif

}  // namespace std

// NOLINTEND(bugprone-reserved-identifier)
#endif
