#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "update/pack_list.h"

/// What clients make of a list of updates, found by the clients' own code. Names stand as ReadSectionNames
/// gives them.
namespace packcheck {

/// The file version of a product's executable.
using Version = std::array<std::uint16_t, 4>;

/// What a client does whose executable has this version.
struct Client {
  Version product{};
  bool offered = false;
  int exit_code = 0;
  bool record_deleted = false;
  std::vector<std::wstring> log;  ///< entries of its comparison
};

struct Warning {
  const char* code;
  std::wstring name;  ///< section that is meant; empty: the file as a whole
  const char* text;
};

struct Report {
  std::optional<std::wstring> heading;
  std::vector<std::wstring> packs;
  std::vector<std::wstring> dropped;  ///< names that clients do not see
  LatestPack newest;                  ///< zeros when clients hold none
  std::optional<Client> client;
  /// Without a product: for the first version and for each from which on clients do something else. Cut
  /// after the first of them when they are very many.
  std::vector<Client> table;
  bool table_cut = false;
  std::vector<Warning> warnings;
};

/// Examines the bytes of a list, beside the bytes of a record of installed updates where there is one.
Report Examine(std::string_view list, std::optional<std::string_view> record, std::optional<Version> product);

}  // namespace packcheck
