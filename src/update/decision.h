#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "update/pack_list.h"

/// The facts that the decision of a check depends on.
struct CheckFacts {
  const std::vector<std::wstring>& sections;  ///< of the fetched list: a heading, then the packs
  LatestPack latest;                          ///< the newest of them
  /// Text of the record of installed updates; empty when it could not be read, nothing when there is none.
  std::optional<std::wstring_view> record;
  std::int32_t product_version = 0;  ///< the executable's version, folded
  /// The last two numbers of that version, as text; empty: the executable or its version is missing.
  std::wstring_view product_level, product_build;
  std::int32_t record_version = 0;  ///< used when `record` contains no version
};

/// The outcome of a check: the path that it takes, and what Comparison does and logs to carry it out.
struct Decision {
  /// Logged before `entries`, depending on the result of the deletion of the record.
  struct Removal {
    std::wstring_view deleted;
    std::wstring_view denied;  ///< error 5
    std::wstring_view failed;  ///< any other error; the next entry is "Error : " and its code
  };

  int exit_code = 0;  ///< 1: the record and the list have content; 2: one of them is empty; 3: no record
  /// Nothing when the product's version is missing: then earlier results stay and nothing is logged.
  std::optional<bool> offered;
  bool record_covers_list = false;  ///< the record names every pack, so the versions decide
  std::optional<Removal> removal;   ///< set: the record is ahead of the executable and is deleted
  std::vector<std::wstring_view> entries;
};

/// Decides whether updates are offered. `record_deleted`: the entry for a deleted record.
Decision Decide(const CheckFacts& facts, std::wstring_view record_deleted);
