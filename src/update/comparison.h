#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "log/log_sink.h"
#include "settings/registered_data.h"
#include "update/check_variant.h"
#include "update/decision.h"
#include "update/exchange.h"

/// The comparison, a step of the check: collects the facts, calls Decide (decision.h) and carries the
/// decision out. Inputs: the version of the product's executable, the list that the exchange fetches, and the
/// record of installed updates. Outputs: the members below.
class Comparison {
 public:
  Comparison(RegisteredDataEntries& product, Exchange& exchange, const CheckVariant& variant, LogSink& log)
      : product_(product), exchange_(exchange), variant_(variant), log_(log) {}

  std::int32_t LatestBuild = 0;
  std::int32_t LatestLevel = 0;
  std::int32_t RecordVersionNumber = 0;
  std::vector<std::wstring> UpdateSections;  ///< section names of the fetched file, in its order
  bool m_bUpdatesAvailable = false;

  /// Fetches the list of updates and compares it with the executable in the install path and the record
  /// beside `productIconPath`. Logs which path was taken; deletes a record that is ahead of the executable.
  /// `productVersion` is not used: the file version of the executable decides.
  void CompareUpdates(const std::wstring& productIconPath, const std::wstring& productVersion);
  /// Sets `LatestLevel` and `LatestBuild` from `UpdateSections`.
  void FindLatestPack();
  /// Sets `RecordVersionNumber`; a text without a version leaves it unchanged.
  void ReadRecordVersion(std::wstring_view text);
  /// Sets `m_bUpdatesAvailable` and its mirror.
  void SetUpdatesAvailable(bool available);
  /// The record's text, decoded with the system's ANSI code page. When the file cannot be read, logs two
  /// entries and returns an empty text.
  std::wstring ReadInstalledRecord(const std::wstring& path);

 private:
  void CarryOut(const Decision& decision, const std::wstring& record_path);
  void DeleteRecord(const Decision::Removal& removal, const std::wstring& path);

  RegisteredDataEntries& product_;
  Exchange& exchange_;
  const CheckVariant& variant_;
  LogSink& log_;
};
