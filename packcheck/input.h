#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace packcheck {

/// The bytes of a file, "-" for standard input, or why there are none.
struct Input {
  std::string bytes;
  std::string error;  ///< empty when all was read; else what is wrong and how to go on, without a line's end
};
/// Reads at most `limit` bytes and one more.
Input Read(const std::filesystem::path& path, std::size_t limit);

}  // namespace packcheck
