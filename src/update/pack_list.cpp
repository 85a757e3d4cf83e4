#include "update/pack_list.h"

#include "text/text.h"

std::optional<PackFields> SplitPackName(std::wstring_view name) {
  const std::size_t last = name.rfind(L'_');
  if (last == std::wstring_view::npos) return std::nullopt;
  PackFields fields{.level = std::nullopt, .build = name.substr(last + 1)};
  const std::wstring_view before = name.substr(0, last);
  const std::size_t second_last = before.rfind(L'_');
  if (second_last != std::wstring_view::npos) fields.level = before.substr(second_last + 1);
  return fields;
}

void FindLatestPack(const std::vector<std::wstring>& sections, LatestPack& latest) {
  if (sections.size() == 2) {
    if (const auto only = SplitPackName(sections[1])) {
      latest.build = text::ParseDecimal(only->build);
      if (only->level) latest.level = text::ParseDecimal(*only->level);
    }
    return;
  }
  std::optional<LatestPack> best;
  std::int32_t level = 0;  // of the previous pack, used for a name without a level
  for (std::size_t i = 1; i < sections.size(); ++i) {
    const auto pack = SplitPackName(sections[i]);
    if (!pack) continue;
    if (pack->level) level = text::ParseDecimal(*pack->level);
    const std::int32_t build = text::ParseDecimal(pack->build);
    const bool higher = !best || level > best->level || (level == best->level && build > best->build);
    if (higher) best = LatestPack{.level = level, .build = build};
  }
  if (best && best->level >= 1 && best->build >= 1) latest = *best;
}

bool IsNewer(const LatestPack& latest, std::int32_t installed_level, std::int32_t installed_build) {
  return installed_level < latest.level ||
         (installed_level == latest.level && installed_build < latest.build);
}
