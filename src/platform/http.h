#pragma once

#include <windows.h>
#include <wininet.h>

#include "platform/handles.h"
#include "platform/system_library.h"

/// The functions of WinInet, loaded with the first call.
namespace wininet {

template <class Type>
using Function = platform::SystemFunction<Type>;

inline platform::SystemLibrary library(L"wininet.dll");
inline Function<decltype(&::HttpOpenRequestW)> HttpOpenRequestW{library, "HttpOpenRequestW"};
inline Function<decltype(&::HttpQueryInfoW)> HttpQueryInfoW{library, "HttpQueryInfoW"};
inline Function<decltype(&::HttpSendRequestW)> HttpSendRequestW{library, "HttpSendRequestW"};
inline Function<decltype(&::InternetCheckConnectionW)> InternetCheckConnectionW{library,
                                                                                "InternetCheckConnectionW"};
inline Function<decltype(&::InternetCloseHandle)> InternetCloseHandle{library, "InternetCloseHandle"};
inline Function<decltype(&::InternetConnectW)> InternetConnectW{library, "InternetConnectW"};
inline Function<decltype(&::InternetOpenW)> InternetOpenW{library, "InternetOpenW"};
inline Function<decltype(&::InternetQueryDataAvailable)> InternetQueryDataAvailable{
    library, "InternetQueryDataAvailable"};
inline Function<decltype(&::InternetReadFile)> InternetReadFile{library, "InternetReadFile"};
inline Function<decltype(&::InternetSetOptionW)> InternetSetOptionW{library, "InternetSetOptionW"};
inline Function<decltype(&::InternetSetStatusCallbackW)> InternetSetStatusCallbackW{
    library, "InternetSetStatusCallbackW"};

}  // namespace wininet

namespace platform {

/// Root handle, connection or request of WinInet. Declare them in this order: they must be closed in reverse.
using UniqueInternet = UniqueHandle<HandleTraits<HINTERNET, wininet::InternetCloseHandle>>;

}  // namespace platform
