#pragma once

#include <windows.h>

#include <commctrl.h>

#include "platform/system_library.h"

/// The functions of the common controls library that the framework uses. The first call loads the library.
namespace common_controls {

template <class Type>
using Function = platform::SystemFunction<Type>;

inline platform::SystemLibrary library(L"comctl32.dll");
inline Function<decltype(&::DefSubclassProc)> DefSubclassProc{library, "DefSubclassProc"};
inline Function<decltype(&::GetWindowSubclass)> GetWindowSubclass{library, "GetWindowSubclass"};
inline Function<decltype(&::InitCommonControlsEx)> InitCommonControlsEx{library, "InitCommonControlsEx"};
inline Function<decltype(&::PropertySheetW)> PropertySheetW{library, "PropertySheetW", -1};
inline Function<decltype(&::RemoveWindowSubclass)> RemoveWindowSubclass{library, "RemoveWindowSubclass"};
inline Function<decltype(&::SetWindowSubclass)> SetWindowSubclass{library, "SetWindowSubclass"};

}  // namespace common_controls
