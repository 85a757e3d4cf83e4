#include "platform/profile.h"

#include <windows.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/encoding.h"
#include "platform/file_rewrite.h"
#include "platform/files.h"

namespace platform {
namespace {

/// The lines that are not empty, without blanks and the nulls of UTF-16.
std::vector<std::string> Lines(std::string_view bytes) {
  std::vector<std::string> lines(1);
  for (const char byte : bytes) {
    if ((byte == '\r' || byte == '\n') && !lines.back().empty()) lines.emplace_back();
    if (std::string_view("\r\n\t \0", 5).find(byte) == std::string_view::npos) lines.back() += byte;
  }
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

/// Whether `after` equals `before`, except for at most one changed or added line, which ends with `ending`,
/// and one section heading added above it. WriteProfileText checks this because Wine reports no failure on a
/// full disk and drops bytes that are not text, and because another program could change the copy.
bool ChangesOneLine(std::string_view before, std::string_view after, std::string_view ending) {
  const std::vector<std::string> old_lines = Lines(before), lines = Lines(after);
  const auto front = std::mismatch(old_lines.begin(), old_lines.end(), lines.begin(), lines.end());
  const auto back = std::mismatch(old_lines.rbegin(), std::make_reverse_iterator(front.first), lines.rbegin(),
                                  std::make_reverse_iterator(front.second));
  const auto removed = back.first.base() - front.first, added = back.second.base() - front.second;
  if (added == 0) return removed == 0;
  return removed <= 1 && added <= 2 - removed && (back.second.base() - 1)->ends_with(ending);
}

}  // namespace

std::wstring ReadProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                             unsigned capacity) {
  std::wstring buffer(capacity, L'\0');
  const DWORD length =
      GetPrivateProfileStringW(section, key, L"", buffer.data(), static_cast<DWORD>(capacity), file.c_str());
  buffer.resize(length < capacity ? length : capacity);
  // Every other reader of the file ends a value at its first null.
  return buffer.c_str();
}

void WriteProfileText(const std::wstring& file, const wchar_t* section, const wchar_t* key,
                      const wchar_t* value, const std::function<bool(const std::wstring& copy)>& condition) {
  RewriteFile(file, [&](std::string_view before) -> std::optional<std::string> {
    const TemporaryFile copy;
    {
      const UniqueFile written = OpenForWriting(copy.Path(), OPEN_EXISTING);
      if (!written || !WriteAll(written.get(), before)) return std::nullopt;
    }
    if (condition && !condition(copy.Path())) return std::nullopt;
    if (!WritePrivateProfileStringW(section, key, value, copy.Path().c_str())) return std::nullopt;
    std::optional<std::string> after = ReadWholeFile(copy.Path(), SIZE_MAX);
    if (after && !ChangesOneLine(before, *after, "=" + ToUtf8(value))) after.reset();
    return after;
  });
}

std::wstring ReadProfileSectionNames(const std::wstring& file, unsigned capacity) {
  // The call ends every list with two nulls, even when it cuts the list, so a cut last name looks like a
  // whole one. The buffer is one character longer to distinguish them: a whole name is followed by its null.
  std::wstring buffer(capacity + 1, L'\0');
  const DWORD length = GetPrivateProfileSectionNamesW(buffer.data(), capacity + 1, file.c_str());
  return buffer.substr(0, length < capacity ? length : capacity - 1);
}

}  // namespace platform
