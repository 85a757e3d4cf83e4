#pragma once

#include <windows.h>
#include <wininet.h>

#include "platform/handles.h"

namespace platform {

struct InternetTraits {
  using Handle = HINTERNET;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { InternetCloseHandle(handle); }
};
/// Root handle, connection and request of WinInet; declared in this order, they close newest first.
using UniqueInternet = UniqueHandle<InternetTraits>;

}  // namespace platform
