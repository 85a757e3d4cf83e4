#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace console {

/// The bytes of an input, or the error that prevented reading all of them.
struct Input {
  std::string bytes;
  /// Empty after success; otherwise the cause and a remedy, safe on a terminal, without a line end.
  std::string error;
};

/// Reads a file, or standard input when `path` is "-". A folder, or more than `limit` bytes, is an error.
Input Read(const std::filesystem::path& path, std::size_t limit);

/// Calls `take` with the text of a file, or of standard input when `path` is "-", block by block in UTF-8.
/// UTF-16 is converted; it needs no byte order mark when its first two characters are ASCII. Other bytes are
/// passed on as they are, also a mark. Returns an error as in Input.
std::string ReadText(const std::filesystem::path& path, const std::function<void(std::string_view)>& take);

}  // namespace console
