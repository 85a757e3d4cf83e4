#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "update/pack_list.h"

/// The clients' answers to a list of updates, from the clients' own decision. Names are as ReadSectionNames
/// returns them.
namespace packcheck {

/// The file version of a product's executable.
using Version = std::array<std::uint16_t, 4>;

/// Level and build, the last two numbers of a client's version or of a pack's name.
using LevelAndBuild = std::pair<std::int64_t, std::int64_t>;

/// The largest number that a file version holds.
inline constexpr std::int64_t kLargestNumber = 65535;

/// What clients read of a list.
struct Published {
  std::vector<std::wstring> sections;  ///< those that fit the clients' buffer: a heading, then the packs
  LatestPack newest;                   ///< zeros when there is none
  std::optional<std::wstring> record;  ///< the clients' record of installed updates; nothing: they have none
};

/// Reads the bytes of a list and of a record. `lost` receives the names that do not fit the clients' buffer.
Published ReadPublished(std::string_view list, std::optional<std::string_view> record,
                        std::vector<std::wstring>& lost);

/// What a client does whose executable has the version `product`.
struct Client {
  Version product{};
  bool offered = false;
  int exit_code = 0;
  bool record_deleted = false;
  std::vector<std::wstring> log;  ///< the entries of its comparison

  /// Whether another client gets the same answer, whatever its version.
  bool HasAnswerOf(const Client& other) const;
};
Client Ask(const Published& published, const Version& product);

/// The version of a client of this product version (15.0) with these last two numbers.
Version VersionOf(const LevelAndBuild& numbers);

/// A version as "15.0.2.5".
std::string PointedText(const Version& version);

/// Every level and build from which on the answer can differ from the one below it. Not each of them is a
/// difference. Between two of them, all clients of this product version get the same answer.
std::set<LevelAndBuild> Thresholds(const Published& published);

/// The first client version that has the record of this very list and is offered updates, although no pack of
/// the list is newer. The reason is the record's version, in which a build of 10 counts like a level.
/// Nothing: there is no such version.
std::optional<Version> FirstOfferedOlder(const Published& published);

}  // namespace packcheck
