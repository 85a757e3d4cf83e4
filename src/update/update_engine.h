#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "settings/registered_data.h"
#include "settings/update_settings.h"
#include "update/pack_list.h"

namespace platform {
class SharedTurn;
}

/// What the check at start-up and the interactive check do differently.
struct CheckVariant {
  const wchar_t* agent;  ///< agent name of the internet session; null: none
  std::wstring_view record_found;
  std::wstring_view record_deleted;
  // Copies of the results outside the check; null: none.
  bool* updates_available_mirror = nullptr;
  bool* check_failed_mirror = nullptr;
  std::wstring* error_text_mirror = nullptr;
};

/// One update check: what it read, and what it found. The owner decides which steps run in which order.
class UpdateEngine : public RegisteredData, public UpdateSettings {
 public:
  UpdateEngine(RegistryFacts& facts, LogSink& log, const CheckVariant& variant)
      : RegisteredData(facts, log), variant_(variant) {}

  std::wstring m_strErrorText;  ///< " Error : " and the last failure's code or message; empty without one
  std::int32_t LatestBuild = 0;
  std::int32_t LatestLevel = 0;
  std::int32_t RecordVersionNumber = 0;
  std::vector<std::wstring> UpdateSections;  ///< section names of the fetched file, in its order
  std::vector<std::wstring> NetworkErrorCodes;
  bool m_bUpdatesAvailable = false;
  bool m_bCheckFailed = false;   ///< the exchange with the server failed
  bool m_bNetworkError = false;  ///< ... with one of `NetworkErrorCodes`

  /// Fills `NetworkErrorCodes`, in place of what it held.
  void FillNetworkErrorCodes();

  /// Fetches the list of updates and compares it with the executable in the install path and the record
  /// beside `productIconPath`. Logs which path was taken; deletes a record that is ahead of the executable.
  /// The registered version has no say: the executable's own file version decides.
  void CompareUpdates(const std::wstring& productIconPath, const std::wstring& productVersion);

  /// Fetches the update information file into the temporary folder and appends its section names to
  /// `sections`. Every failure sets `m_bCheckFailed` and `m_strErrorText` and is logged with its code; a
  /// completed download clears the flag. A status other than 200 and 404 downloads the body all the same and
  /// leaves its number as the error text. Nothing is left open.
  void DownloadUpdateList(std::vector<std::wstring>& sections);
  /// The request path; empty when the address does not name the update location's host, or the location is a
  /// complete address. Logs which.
  std::wstring GetUpdatePathFromTagThree();
  /// Sets `m_bNetworkError` when `code` is in `NetworkErrorCodes`.
  void MatchNetworkErrorCode(std::wstring_view code);
  /// " Error : " and `text`, or nothing for an empty text.
  void SetErrorText(std::wstring_view text);

  /// Settles `LatestLevel` and `LatestBuild` from `UpdateSections`.
  void FindLatestPack();
  /// Settles `RecordVersionNumber`; a text without a version leaves it.
  void ReadRecordVersion(std::wstring_view text);
  /// The record's text, read in the system's code page; empty and two entries when it cannot be read.
  std::wstring ReadInstalledRecord(const std::wstring& path);

 private:
  // Exchange.
  bool ProbeConnection();
  bool FetchToFile(const std::wstring& path, const std::wstring& file, platform::SharedTurn& turn,
                   std::wstring& pending_error);
  bool CheckStatus(void* request, std::wstring& pending_error);
  bool CopyBody(void* request, const std::wstring& file);
  void ReportFailure(std::wstring_view message, unsigned long error);
  void FailWith(std::wstring_view error_text);
  void SetCheckFailed(bool failed);

  // Comparison.
  enum class NewerPack { unknown, none, exists };
  NewerPack TestNewerPack() const;
  void CompareWithoutRecord();
  void CompareWithRecord(const std::wstring& record);
  void CompareWithCoveringRecord(const std::wstring& record, const std::wstring& content);
  void DeleteRecord(const std::wstring& record);
  void ReportNewerPack(std::size_t exit_code);
  void ReportFound(std::size_t exit_code);
  void ReportNotFound(std::size_t exit_code, bool matching);
  void SetUpdatesAvailable(bool available);

  CheckVariant variant_;
};
