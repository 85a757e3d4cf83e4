#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "update/check_rules.h"

/// The report on a list of updates for its publisher. The clients' own function computes their answers
/// (update/check_rules.h). Names are as ReadSectionNames returns them.
namespace packcheck {

/// The file version of a client, that is of its product's executable.
using Version = std::array<std::uint16_t, 4>;

struct Answer {
  bool offered = false;
  int exit_code = 0;
  bool record_deleted = false;

  bool operator==(const Answer&) const = default;
};

/// The answer that a client of this version ("15.0.2.5") gets, and the entries of its comparison in its log.
struct Client : Answer {
  std::string product;
  std::vector<std::wstring> log;
};

/// From this version on, up to that of the next row, clients get this answer.
struct Row : Answer {
  std::string from;
};

struct Warning {
  std::string code;
  std::wstring name;  ///< what it is about (docs/publisher.md); empty: the file as a whole
  std::string text;
};

struct Report {
  std::optional<std::wstring> heading;
  std::vector<std::wstring> packs;
  std::vector<std::wstring> dropped;      ///< names that clients do not see
  LatestPack newest;                      ///< zeros when clients find none
  std::optional<Client> client;           ///< the client that was asked for
  std::optional<std::vector<Row>> table;  ///< all clients, when none was asked for
  std::vector<Warning> warnings;
};

/// Examines the bytes of a list. `record`: the bytes of all clients' record of installed updates, if they
/// have one. `product`: the client whose answer is wanted; nothing: all.
Report Examine(std::string_view list, std::optional<std::string_view> record, std::optional<Version> product);

/// Every code that a warning can have.
std::vector<std::string> WarningCodes();

/// A range of client versions, `from` and `to` included, that get another answer from the second list.
struct Change {
  std::string from, to;
  Answer before, after;
};

struct Comparison {
  std::vector<Change> changes;
  std::size_t warnings = 0;  ///< those of the second list
};

/// What changes when `after` replaces `before`, for clients that all have this record.
Comparison Compare(std::string_view before, std::string_view after, std::optional<std::string_view> record);

}  // namespace packcheck
