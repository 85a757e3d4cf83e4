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

/// The answers of clients to a list of updates. The clients' own function computes them (update/decision.h).
/// Names are as ReadSectionNames returns them.
namespace packcheck {

/// The file version of a product's executable.
using Version = std::array<std::uint16_t, 4>;

/// Level and build, the last two numbers of a client's version or of a pack's name.
using LevelAndBuild = std::pair<std::int64_t, std::int64_t>;

/// The largest number that a file version holds.
inline constexpr std::int64_t kLargestNumber = 65535;

/// The data that clients read from a list, and their record.
struct Published {
  std::vector<std::wstring> sections;  ///< those that fit the clients' buffer: a heading, then the packs
  LatestPack newest;                   ///< zeros when there is none
  std::optional<std::wstring> record;  ///< the clients' record of installed updates; nothing: they have none
};

/// Reads the bytes of a list and of a record. `lost` receives the names that do not fit the clients' buffer.
Published ReadPublished(std::string_view list, std::optional<std::string_view> record,
                        std::vector<std::wstring>& lost);

/// The answer that a client gets whose executable has the version `product`.
struct ClientAnswer {
  Version product{};
  bool offered = false;
  int exit_code = 0;
  bool record_deleted = false;
  std::vector<std::wstring> log;  ///< the entries of its comparison

  /// Whether both offer, log and delete the same; versions and log entries are not compared.
  bool IsSameAs(const ClientAnswer& other) const;
};
ClientAnswer AnswerFor(const Published& published, const Version& product);

/// The version of a client of this product version (15.0) with these last two numbers.
Version VersionOf(const LevelAndBuild& numbers);

/// A version as "15.0.2.5".
std::string DottedText(const Version& version);

/// Candidate versions: every level and build at which the answer can change, a superset of those at which it
/// does. From one candidate to the next, all clients of this product version get the same answer.
std::set<LevelAndBuild> Thresholds(const Published& published);

/// The first version of a client that is offered updates although its record names every pack of the list and
/// no pack is newer. The cause is the record's version, in which a build of 10 counts like a level. Nothing
/// when there is no such version.
std::optional<Version> FirstOfferedOlder(const Published& published);

}  // namespace packcheck
