#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "log/log_sink.h"
#include "settings/registered_data.h"
#include "settings/update_settings.h"
#include "update/check_rules.h"

class ListFile;
struct ExchangeProgress;

/// The differences between the start-up check and the interactive check.
struct CheckVariant {
  const wchar_t* agent = nullptr;  ///< agent name of the internet session; null: none
  // Log entries.
  std::wstring_view record_found, record_deleted;
};

/// The steps of one update check and their results. A check runs them in its own order: registered data and
/// settings (the base classes), then CompareUpdates.
class UpdateEngine : public RegisteredDataEntries, public UpdateSettings {
 public:
  /// `facts` and `log` outlive the engine.
  UpdateEngine(KeptFacts& facts, LogSink& log, const CheckVariant& variant)
      : RegisteredDataEntries(facts, log), variant_(variant) {}
  UpdateEngine(const UpdateEngine&) = delete;
  UpdateEngine& operator=(const UpdateEngine&) = delete;
  virtual ~UpdateEngine() = default;

  std::wstring m_strErrorText;  ///< " Error : " and the last failure's code or message; empty without one
  std::vector<std::wstring> NetworkErrorCodes;
  bool m_bCheckFailed = false;   ///< the exchange with the server failed
  bool m_bNetworkError = false;  ///< it failed with one of `NetworkErrorCodes`
  bool m_bUpdatesAvailable = false;
  std::vector<std::wstring> UpdateSections;  ///< section names of the fetched file, in its order
  std::int32_t LatestBuild = 0;
  std::int32_t LatestLevel = 0;
  std::int32_t RecordVersionNumber = 0;

  /// Fetches the list of updates and compares it with the executable in the install path and the record
  /// beside `productIconPath`. Logs which path was taken; deletes a record that is ahead of the executable.
  /// `productVersion` is not used: the file version of the executable decides.
  void CompareUpdates(const std::wstring& productIconPath, const std::wstring& productVersion);

  // The exchange with the server (exchange.cpp).
  /// Fetches the list into the temporary folder (list_file.h) and appends its section names to `sections`. A
  /// failure is logged and sets `m_bCheckFailed` and `m_strErrorText`, with two exceptions: a time-out that
  /// cannot be set, and a file that is gone after the download, are only logged. Success clears
  /// `m_bCheckFailed`. With a status other than 200 and 404 the body is still downloaded, and
  /// `m_strErrorText` holds the status number. All handles are closed.
  void DownloadUpdateList(std::vector<std::wstring>& sections);
  /// The request path; empty when the address does not name the update location's host, or the location is a
  /// complete address. Logs the case.
  std::wstring GetUpdatePathFromTagThree();
  /// Sets `m_bNetworkError` when `code` is in `NetworkErrorCodes`.
  void MatchNetworkErrorCode(std::wstring_view code);
  /// Sets `m_strErrorText` to " Error : " and `text`, or to nothing for an empty text.
  virtual void SetErrorText(std::wstring_view text);
  virtual void SetCheckFailed(bool failed) { m_bCheckFailed = failed; }

  // The comparison (comparison.cpp).
  /// Sets `LatestLevel` and `LatestBuild` from `UpdateSections`.
  void FindLatestPack();
  /// Sets `RecordVersionNumber`; a text without a version leaves it unchanged.
  void ReadRecordVersion(std::wstring_view text);
  /// The record's text, decoded with the system's ANSI code page. When the file cannot be read, logs two
  /// entries and returns an empty text.
  std::wstring ReadInstalledRecord(const std::wstring& path);
  virtual void SetUpdatesAvailable(bool available) { m_bUpdatesAvailable = available; }

 private:
  // The bool functions return false after a failure, which they have logged and stored. `request` is a
  // HINTERNET. `pending_error` receives a status that is neither 200 nor 404, in decimal.
  bool FetchToFile(const std::wstring& path, ListFile& file, std::wstring& pending_error);
  bool CheckStatus(void* request, std::wstring& pending_error);
  bool CopyBody(void* request, const ExchangeProgress& progress, ListFile& file);
  /// Logs and stores a failure, with `advice` after its code. Returns false.
  bool ReportFailure(std::wstring_view message, unsigned long error, std::wstring_view advice = {});
  void DeleteRecord(const std::wstring& path);

  const CheckVariant variant_;
};
