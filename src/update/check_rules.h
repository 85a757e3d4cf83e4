#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The rules of a check that need only text and numbers. The list of updates that a check fetches:
///
///   [Update Packs for Versions]      the heading
///   [Varnexa15_0_1_12]               a pack of level 1 and build 12
///   [Varnexa15_0_2_3]
///   [Varnexa15_0_2_7]                the newest pack: level 2, build 7
///
/// "Sections" below are the names of these sections, in the list's order. The record of installed updates is
/// a text that names the packs which the product has processed.

/// In bytes. A record names a few packs in a few hundred bytes; a file larger than this counts as unreadable.
inline constexpr std::size_t kRecordSizeLimit = 64 * 1024 * 1024;

/// The rest of the update-information address after `host` and one more character (normally "/"): the
/// request's object name, without the leading slash that WinInet adds. Empty when the address ends there;
/// nothing when `host` does not occur (case-sensitive, first occurrence).
std::optional<std::wstring_view> RequestPath(std::wstring_view address, std::wstring_view host);

/// The last two fields of a pack's name, which underscores separate.
struct PackFields {
  std::optional<std::wstring_view> level;  ///< nothing for a name with a single underscore
  std::wstring_view build;
};
/// Nothing for a name without an underscore, which is not a pack's.
std::optional<PackFields> SplitPackName(std::wstring_view name);

/// The newest pack of a list: the highest level, and the highest build of that level.
struct LatestPack {
  std::int32_t level = 0;
  std::int32_t build = 0;
};
/// Several packs: a name without a level takes that of the pack before it; a best level or build below 1
/// leaves `latest` unchanged. One pack: its fields are taken as they are.
void FindLatestPack(const std::vector<std::wstring>& sections, LatestPack& latest);
/// Whether the installed executable (third and fourth number of its version) is older than `latest`.
bool IsNewer(const LatestPack& latest, std::int32_t installed_level, std::int32_t installed_build);

/// How many packs of the list the record names.
std::size_t CountRecordedPacks(const std::vector<std::wstring>& sections, std::wstring_view record);
/// The version at the end of a record that names one pack, e.g. 15027 for "Varnexa15_0_2_7": the four numbers
/// after the product's name, folded with a factor of ten. Nothing when the text does not hold exactly three
/// underscores or lacks the product's name.
std::optional<std::int32_t> ParseRecordVersion(std::wstring_view record);

/// What Decide depends on.
struct CheckFacts {
  const std::vector<std::wstring>& sections;
  LatestPack latest;
  /// Text of the record; empty when it could not be read, nothing when there is none.
  std::optional<std::wstring_view> record;
  std::int32_t record_version = 0;   ///< of `record` (ParseRecordVersion)
  std::int32_t product_version = 0;  ///< the executable's version, folded
  /// The last two numbers of that version, as text; empty: the executable or its version is missing.
  std::wstring_view product_level, product_build;
};

/// The outcome of a check: the path that it takes, and what it does and logs.
struct Decision {
  int exit_code = 0;  ///< 1: the record and the list have content; 2: one of them is empty; 3: no record
  /// Nothing when the product's version is missing: then earlier results stay and nothing is logged.
  std::optional<bool> offered;
  bool delete_record = false;  ///< the record is ahead of the executable; deleted, and this logged, first
  std::vector<std::wstring_view> entries;
};
/// Decides whether updates are offered.
Decision Decide(const CheckFacts& facts);
