#pragma once

#include <optional>
#include <string_view>

/// What stands behind `host` and the one character after it (normally "/") in the update-information address:
/// the request's object name, without the leading slash that WinInet adds. Empty when nothing stands there;
/// nothing when `host` does not occur (case-sensitive, first occurrence).
std::optional<std::wstring_view> RequestPath(std::wstring_view address, std::wstring_view host);
