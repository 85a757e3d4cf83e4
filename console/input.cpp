#include "console/input.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "console/text.h"

namespace console {
namespace {

constexpr std::size_t kBlock = 65536;

std::string NameOf(const std::filesystem::path& path) {
  return path == "-" ? "standard input" : "'" + PrintablePath(path) + "'";
}

std::istream& StandardInput() {
#ifdef _WIN32
  _setmode(0, _O_BINARY);
#endif
  return std::cin;
}

/// Calls `take` with the bytes of an input, block by block, until it returns false. Returns an error as in
/// Input.
std::string ReadBlocks(const std::filesystem::path& path, const std::function<bool(std::string_view)>& take) {
  const bool standard = path == "-";
  const std::string name = NameOf(path);
  std::error_code error;
  if (!standard && std::filesystem::is_directory(path, error))
    return name + " is a folder; name a file in it, or - for standard input";
  std::ifstream file;
  if (!standard) file.open(path, std::ios::binary);
  std::istream& stream = standard ? StandardInput() : file;
  std::array<char, kBlock> block{};
  while (stream) {
    stream.read(block.data(), kBlock);
    if (!take({block.data(), static_cast<std::size_t>(stream.gcount())})) return {};
  }
  if (!stream.bad() && stream.eof()) return {};
  return "cannot read " + name + " (" + std::strerror(errno) +
         "); check its name and rights, or use - for standard input";
}

/// The mark of UTF-16, with or without which `bytes` begin; empty for other text.
std::string_view Utf16Mark(std::string_view bytes) {
  const auto is_zero = [&](std::size_t i) { return bytes[i] == 0; };
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) return bytes.substr(0, 2);
  if (bytes.size() < 4 || is_zero(0) == is_zero(1) || is_zero(0) != is_zero(2) || is_zero(1) != is_zero(3))
    return {};
  return is_zero(1) ? "\xFF\xFE" : "\xFE\xFF";
}

/// How many bytes of UTF-16 after `mark` are whole characters.
std::size_t WholeUtf16(std::string_view bytes, std::string_view mark) {
  const std::size_t size = bytes.size() / 2 * 2;
  if (size == 0) return 0;
  const char high = bytes[mark == "\xFF\xFE" ? size - 1 : size - 2];
  return (high & 0xFC) == 0xD8 ? size - 2 : size;
}

}  // namespace

Input Read(const std::filesystem::path& path, std::size_t limit) {
  Input input;
  input.error = ReadBlocks(path, [&](std::string_view block) {
    input.bytes.append(block);
    return input.bytes.size() <= limit;
  });
  if (input.bytes.size() > limit) {
    input.error =
        NameOf(path) + " is larger than " + std::to_string(limit >> 20) + " MiB; is it the right file?";
  }
  return input;
}

std::string ReadText(const std::filesystem::path& path, const std::function<void(std::string_view)>& take) {
  std::string mark, pending;
  bool first = true;
  return ReadBlocks(path, [&](std::string_view block) {
    if (first) mark = Utf16Mark(block);
    first = false;
    if (mark.empty()) {
      take(block);
      return true;
    }
    pending.append(block);
    const std::size_t whole = WholeUtf16(pending, mark);
    take(Utf8(DecodeText(mark + pending.substr(0, whole))));
    pending.erase(0, whole);
    return true;
  });
}

}  // namespace console
