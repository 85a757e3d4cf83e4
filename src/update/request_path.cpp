#include "update/request_path.h"

std::optional<std::wstring_view> RequestPath(std::wstring_view address, std::wstring_view host) {
  const std::size_t found = address.find(host);
  if (found == std::wstring_view::npos) return std::nullopt;
  const std::size_t start = found + host.size() + 1;
  return start < address.size() ? address.substr(start) : std::wstring_view();
}
