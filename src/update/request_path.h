#pragma once

#include <optional>
#include <string_view>

/// The rest of the update-information address after `host` and one more character (normally "/"): the
/// request's object name, without the leading slash that WinInet adds. Empty when the address ends there;
/// nothing when `host` does not occur (case-sensitive, first occurrence).
std::optional<std::wstring_view> RequestPath(std::wstring_view address, std::wstring_view host);
