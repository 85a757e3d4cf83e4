#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "packcheck/answers.h"

/// The report on a list of updates for its publisher.
namespace packcheck {

struct Warning {
  std::string code;
  std::wstring name;  ///< the section, line or client version concerned; empty: the file as a whole
  std::string text;
};

struct Report {
  std::optional<std::wstring> heading;
  std::vector<std::wstring> packs;
  std::vector<std::wstring> dropped;   ///< names that clients do not see
  LatestPack newest;                   ///< zeros when clients find none
  std::optional<ClientAnswer> client;  ///< the answer to the product that was asked for
  /// Without a product: the first version, and each version from which on clients get another answer.
  std::vector<ClientAnswer> table;
  std::vector<Warning> warnings;
};

/// Examines the bytes of a list, and those of a record of installed updates if there is one.
Report Examine(std::string_view list, std::optional<std::string_view> record, std::optional<Version> product);

/// A range of client versions, `from` and `to` included, that get another answer from the second list.
struct Change {
  Version from{}, to{};
  ClientAnswer before, after;
};

/// The changes when `after` replaces `before`, for clients that all have this record.
std::vector<Change> Compare(std::string_view before, std::string_view after,
                            std::optional<std::string_view> record);

}  // namespace packcheck
