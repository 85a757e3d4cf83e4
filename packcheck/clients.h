#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "packcheck/report.h"

/// What clients read in a list, and what they do.
namespace packcheck {

constexpr bool IsVersionNumber(std::int64_t number) {
  return number >= 0 && number <= 0xFFFF;
}

/// A version as "15.0.2.5".
std::string DottedText(const Version& version);

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

/// Clients of this product version (15.0), from the first one on, at which the answer may change; between two
/// neighbours it is the same.
std::set<Version> Thresholds(const Published& published);

/// The warnings of a list, whose bytes `published` was read from.
std::vector<Warning> FindWarnings(std::string_view list, const Published& published);

}  // namespace packcheck
