#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "packcheck/report.h"

/// What clients read in a list, and what they do.
namespace packcheck {

/// Level and build, the last two numbers of a client's version or of a pack's name.
using LevelAndBuild = std::pair<std::int64_t, std::int64_t>;

/// The largest number that a file version holds.
inline constexpr std::int64_t kLargestNumber = 65535;
constexpr bool IsInRange(std::int64_t number) {
  return number >= 0 && number <= kLargestNumber;
}

inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// The data that clients read from a list, and their record.
struct Published {
  std::vector<std::wstring> sections;  ///< those that fit the clients' buffer: a heading, then the packs
  std::vector<std::wstring> lost;      ///< those that do not
  std::optional<std::wstring> hidden;  ///< the one that a UTF-8 byte order mark hides from Windows
  LatestPack newest;                   ///< zeros when there is none
  std::optional<std::wstring> record;  ///< nothing: clients have none
};
Published ReadPublished(std::string_view list, std::optional<std::string_view> record);

Client AskClient(const Published& published, const Version& product);

/// The version of a client of this product version (15.0) with these last two numbers.
Version VersionOf(const LevelAndBuild& numbers);

/// Versions at which the answer may change; between two neighbours it is the same.
std::set<LevelAndBuild> Thresholds(const Published& published);

/// The warnings of a list, whose bytes `published` was read from.
std::vector<Warning> FindWarnings(std::string_view list, const Published& published);

}  // namespace packcheck
