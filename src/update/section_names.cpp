#include "update/section_names.h"

#include <algorithm>

#include "text/text.h"

namespace {

constexpr std::wstring_view kLineEnds = L"\r\n";
// Blanks that the profile functions skip around a heading and its name.
constexpr std::wstring_view kBlanks = L" \t\v\f\x1A";
/// The null after the last name, which ends the list.
constexpr std::size_t kListEnd = 1;

wchar_t Unit(char high, char low) {
  return static_cast<wchar_t>(static_cast<unsigned char>(high) << 8 | static_cast<unsigned char>(low));
}

std::wstring Decode(std::string_view bytes) {
  const bool little = bytes.starts_with("\xFF\xFE");
  if (!little && !bytes.starts_with("\xFE\xFF")) return WidenBytes(bytes);
  std::wstring text;
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    text += little ? Unit(bytes[i + 1], bytes[i]) : Unit(bytes[i], bytes[i + 1]);
  }
  return text;
}

}  // namespace

void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections) {
  for (std::size_t end; (end = buffer.find(L'\0')) != std::wstring_view::npos && end != 0;) {
    sections.emplace_back(buffer.substr(0, end));
    buffer.remove_prefix(end + 1);
  }
}

std::wstring WidenBytes(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  for (const char byte : bytes) text += Unit(static_cast<unsigned char>(byte) < 0x80 ? '\0' : '\xDC', byte);
  return text;
}

std::vector<std::wstring> ReadHeadingLines(std::string_view bytes) {
  const std::wstring text = Decode(bytes);
  std::vector<std::wstring> lines;
  for (std::wstring_view rest = text; !rest.empty();) {
    const std::size_t end = std::min(rest.find_first_of(kLineEnds), rest.size());
    const std::wstring_view line = text::Trim(rest.substr(0, end), kBlanks);
    if (line.starts_with(L'[')) lines.emplace_back(line);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return lines;
}

std::wstring_view SectionNameIn(std::wstring_view heading_line) {
  const std::size_t end = heading_line.rfind(L']');
  if (end == heading_line.npos) return {};
  const std::wstring_view name = text::Trim(heading_line.substr(1, end - 1), kBlanks);
  return name.substr(0, name.find(L'\0'));
}

std::vector<std::wstring> ReadSectionNames(std::string_view bytes) {
  std::vector<std::wstring> names;
  for (const std::wstring& line : ReadHeadingLines(bytes)) {
    const std::wstring_view name = SectionNameIn(line);
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}

std::size_t CountWholeNames(const std::vector<std::wstring>& names, std::size_t capacity) {
  std::size_t used = 0, count = 0;
  for (const std::wstring& name : names) {
    used += name.size() + 1;
    if (used > capacity - kListEnd) break;
    ++count;
  }
  return count;
}
