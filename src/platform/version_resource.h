#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace platform {

using FileVersion = std::array<std::uint16_t, 4>;

/// The file version in the fixed part of a file's version resource, most significant number first; nothing
/// when the file has none or cannot be read.
std::optional<FileVersion> ReadFileVersion(const std::wstring& path);
/// The four numbers in decimal, joined by dots.
std::wstring FileVersionText(const FileVersion& version);

}  // namespace platform
