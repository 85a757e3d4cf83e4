#include "platform/system_library.h"

namespace platform {

void SearchSystemFolderOnly() {
  SystemLibrary kernel(L"kernel32.dll");
  SystemFunction<decltype(&::SetDefaultDllDirectories)> set(kernel, "SetDefaultDllDirectories");
  set(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

FARPROC SystemLibrary::Find(const char* function) {
  if (module_ == nullptr) module_ = LoadLibraryW(name_);
  return module_ == nullptr ? nullptr : GetProcAddress(module_, function);
}

}  // namespace platform
