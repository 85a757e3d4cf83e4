#include "platform/version_resource.h"

#include <windows.h>

#include <vector>

#include "platform/system_library.h"
#include "text/text.h"

namespace platform {
namespace {

SystemLibrary library(L"version.dll");
SystemFunction<decltype(&::GetFileVersionInfoSizeW)> GetFileVersionInfoSizeW(library,
                                                                             "GetFileVersionInfoSizeW");
SystemFunction<decltype(&::GetFileVersionInfoW)> GetFileVersionInfoW(library, "GetFileVersionInfoW");
SystemFunction<decltype(&::VerQueryValueW)> VerQueryValueW(library, "VerQueryValueW");

}  // namespace

std::optional<FileVersion> ReadFileVersion(const std::wstring& path) {
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
  if (size == 0) return std::nullopt;
  std::vector<BYTE> resource(size);
  if (!GetFileVersionInfoW(path.c_str(), 0, size, resource.data())) return std::nullopt;
  void* block = nullptr;
  UINT length = 0;
  if (!VerQueryValueW(resource.data(), L"\\", &block, &length)) return std::nullopt;
  if (block == nullptr || length < sizeof(VS_FIXEDFILEINFO)) return std::nullopt;
  const auto* info = static_cast<const VS_FIXEDFILEINFO*>(block);
  return FileVersion{HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                     HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS)};
}

std::wstring FileVersionText(const FileVersion& version) {
  std::wstring text;
  for (const std::uint16_t number : version) {
    if (!text.empty()) text += L'.';
    text += text::FormatDecimal(number);
  }
  return text;
}

}  // namespace platform
