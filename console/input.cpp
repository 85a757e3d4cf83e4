#include "console/input.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "console/terminal.h"

namespace console {
namespace {

constexpr std::size_t kBlock = 65536;

std::istream& StandardInput() {
#ifdef _WIN32
  _setmode(0, _O_BINARY);
#endif
  return std::cin;
}

}  // namespace

Input Read(const std::filesystem::path& path, std::size_t limit) {
  const bool standard = path == "-";
  const std::string name = standard ? "standard input" : "'" + PrintablePath(path) + "'";
  std::error_code error;
  if (!standard && std::filesystem::is_directory(path, error)) {
    return {.bytes = {}, .error = name + " is a folder; name a file in it, or - for standard input"};
  }
  std::ifstream file;
  if (!standard) file.open(path, std::ios::binary);
  std::istream& stream = standard ? StandardInput() : file;
  Input input;
  std::array<char, kBlock> block{};
  while (stream && input.bytes.size() <= limit) {
    stream.read(block.data(), static_cast<std::streamsize>(std::min(kBlock, limit + 1 - input.bytes.size())));
    input.bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (input.bytes.size() > limit) {
    return {.bytes = {},
            .error = name + " is larger than " + std::to_string(limit >> 20) + " MiB; is it the right file?"};
  }
  if (stream.bad() || !stream.eof()) {
    return {.bytes = {},
            .error = "cannot read " + name + " (" + std::strerror(errno) +
                     "); check its name and rights, or use - for standard input"};
  }
  return input;
}

}  // namespace console
