// Replaces libstdc++'s throwing failure handlers, which would link the unwinder, exception printing and
// thread support, and would show a box in a run that the product started. The program ends at once instead.
// The tests use libstdc++'s handlers.
#include <windows.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

/// The exit code of abort().
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
// NOLINTBEGIN(bugprone-reserved-identifier): libstdc++'s names.

extern "C" void __cxa_pure_virtual() {
  End();
}

// libstdc++ has these in one object file: if one is missing here, the linker reports all of them as
// duplicates.
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
// From release 13 on libstdc++ keeps _M_replace_cold in an object file that links the unwinder. These
// instantiations take its place.
template void basic_string<char>::_M_replace_cold(char*, size_type, const char*, size_type, size_type);
template void basic_string<wchar_t>::_M_replace_cold(wchar_t*, size_type, const wchar_t*, size_type,
                                                     size_type);
#endif

}  // namespace std

// NOLINTEND(bugprone-reserved-identifier)
#endif
