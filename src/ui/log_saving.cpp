#include "ui/log_saving.h"

#include "text/text.h"

namespace {

constexpr std::wstring_view kExtension = L".txt";

}  // namespace

std::wstring EditText(std::wstring_view log) {
  std::wstring result(log);
  text::ReplaceAll(result, L"\n", L"\r\n");
  return result;
}

std::optional<std::wstring> SavedLogPath(std::wstring_view path) {
  const std::size_t backslash = path.rfind(L'\\');
  const std::wstring_view name = backslash == std::wstring_view::npos ? path : path.substr(backslash + 1);
  const std::size_t dot = name.rfind(L'.');
  std::wstring result(path);
  if (dot == std::wstring_view::npos) return result += kExtension;
  if (name.substr(dot) != kExtension) return std::nullopt;
  return result;
}
