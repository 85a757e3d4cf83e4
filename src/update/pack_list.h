#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The newest update pack of a list: the highest level, and the highest build of that level.
struct LatestPack {
  std::int32_t level = 0;
  std::int32_t build = 0;
};

/// The last two fields of a pack's name, which underscores separate.
struct PackFields {
  std::optional<std::wstring_view> level;  ///< absent in a name with a single underscore
  std::wstring_view build;
};
/// Splits a section name. Returns nothing for a name without an underscore, which is not a pack's.
std::optional<PackFields> SplitPackName(std::wstring_view name);

/// Updates `latest` from the section names of an update information file. The first name is the file's own
/// heading; the others name packs (SplitPackName). Of several packs, one without a level has the level of the
/// pack before it, and `latest` keeps its values when the best level or build is below 1. A single pack sets
/// the fields that its name has.
void FindLatestPack(const std::vector<std::wstring>& sections, LatestPack& latest);

/// Whether the installed executable (third and fourth number of its version) is older than `latest`.
bool IsNewer(const LatestPack& latest, std::int32_t installed_level, std::int32_t installed_build);
