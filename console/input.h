#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace console {

/// The bytes of an input, or why there are none.
struct Input {
  std::string bytes;
  std::string
      error;  ///< empty after success; else the cause and a remedy, safe on a terminal, without a line end
};

/// Reads a file, or standard input when `path` is "-". More than `limit` bytes are an error.
Input Read(const std::filesystem::path& path, std::size_t limit);

}  // namespace console
