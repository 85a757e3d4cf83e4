#include "update/section_names.h"

void AppendSectionNames(std::wstring_view buffer, std::vector<std::wstring>& sections) {
  for (std::size_t end; (end = buffer.find(L'\0')) != std::wstring_view::npos && end != 0;) {
    sections.emplace_back(buffer.substr(0, end));
    buffer.remove_prefix(end + 1);
  }
}
