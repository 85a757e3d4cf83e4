#include "update/record_text.h"

#include <algorithm>
#include <array>

#include "product/identity.h"
#include "text/text.h"

std::size_t CountRecordedPacks(const std::vector<std::wstring>& sections, std::wstring_view record) {
  std::size_t count = 0;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    if (record.find(sections[i]) != std::wstring_view::npos) ++count;
  }
  return count;
}

std::optional<std::int32_t> ParseRecordVersion(std::wstring_view record) {
  if (std::count(record.begin(), record.end(), L'_') != 3) return std::nullopt;
  constexpr std::wstring_view kProduct = L"" TAVREL_PRODUCT;
  std::size_t found = record.find(kProduct);
  if (found == std::wstring_view::npos) found = record.find(L"" TAVREL_PRODUCT_LOWER);
  if (found == std::wstring_view::npos) return std::nullopt;

  std::wstring_view rest = record.substr(found + kProduct.size());
  std::array<std::int32_t, 4> fields{};
  for (std::size_t i = fields.size() - 1; i > 0; --i) {
    const std::size_t underscore = rest.rfind(L'_');
    // An underscore before the product's name leaves fewer than three after it.
    if (underscore == std::wstring_view::npos) return std::nullopt;
    fields[i] = text::ParseDecimal(rest.substr(underscore + 1));
    rest = rest.substr(0, underscore);
  }
  fields[0] = text::ParseDecimal(rest);
  return text::FoldVersion(fields[0], fields[1], fields[2], fields[3]);
}
