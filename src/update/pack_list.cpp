#include "update/pack_list.h"

#include <optional>

#include "text/text.h"

namespace {

struct PackNumbers {
  std::int32_t build = 0;
  std::optional<std::int32_t> level;  // absent in a name with a single underscore
};

std::optional<PackNumbers> ParsePackName(std::wstring_view name) {
  const std::size_t last = name.rfind(L'_');
  if (last == std::wstring_view::npos) return std::nullopt;
  PackNumbers numbers{text::ParseDecimal(name.substr(last + 1)), std::nullopt};
  const std::wstring_view before = name.substr(0, last);
  const std::size_t second_last = before.rfind(L'_');
  if (second_last != std::wstring_view::npos) {
    numbers.level = text::ParseDecimal(before.substr(second_last + 1));
  }
  return numbers;
}

}  // namespace

void FindLatestPack(const std::vector<std::wstring>& sections, LatestPack& latest) {
  if (sections.size() == 2) {
    if (const auto only = ParsePackName(sections[1])) {
      latest.build = only->build;
      latest.level = only->level.value_or(latest.level);
    }
    return;
  }
  std::optional<LatestPack> best;
  std::int32_t level = 0;  // a name without one takes the level of the pack before it
  for (std::size_t i = 1; i < sections.size(); ++i) {
    const auto pack = ParsePackName(sections[i]);
    if (!pack) continue;
    level = pack->level.value_or(level);
    const bool higher = !best || level > best->level || (level == best->level && pack->build > best->build);
    if (higher) best = LatestPack{level, pack->build};
  }
  if (best && best->level >= 1 && best->build >= 1) latest = *best;
}

bool IsNewer(const LatestPack& latest, std::int32_t installed_level, std::int32_t installed_build) {
  return installed_level < latest.level ||
         (installed_level == latest.level && installed_build < latest.build);
}
