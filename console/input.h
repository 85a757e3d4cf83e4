#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace console {

/// The bytes of an input, or the error that prevented reading them.
struct Input {
  std::string bytes;
  /// Empty after success; otherwise the cause and a remedy, safe on a terminal, without a line end.
  std::string error;
};

/// Reads a file, or standard input when `path` is "-". A folder, or more than `limit` bytes, is an error.
Input Read(const std::filesystem::path& path, std::size_t limit);

}  // namespace console
