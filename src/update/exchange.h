#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "log/log_sink.h"
#include "settings/registered_data.h"
#include "settings/update_settings.h"
#include "update/check_variant.h"

class ListFile;

/// The exchange with the update server, a step of the check. Inputs: the registered address of the list
/// (`TagThree`), the location and the time-out of the settings, and whether that location is a complete
/// address. Outputs: the section names of the fetched list and the members below.
class Exchange {
 public:
  Exchange(const RegisteredDataEntries& product, const UpdateSettings& settings, const CheckVariant& variant,
           LogSink& log)
      : product_(product), settings_(settings), variant_(variant), log_(log) {}

  std::wstring m_strErrorText;  ///< " Error : " and the last failure's code or message; empty without one
  std::vector<std::wstring> NetworkErrorCodes;
  bool m_bCheckFailed = false;   ///< the exchange with the server failed
  bool m_bNetworkError = false;  ///< it failed with one of `NetworkErrorCodes`

  /// Replaces the content of `NetworkErrorCodes` by the thirteen codes.
  void FillNetworkErrorCodes();
  /// Fetches the update information file into the temporary folder (list_file.h) and appends its section
  /// names to `sections`. A failure is logged and sets `m_bCheckFailed` and `m_strErrorText`, with two
  /// exceptions: a time-out that cannot be set, and a file that is gone after the download, are only logged.
  /// Success clears `m_bCheckFailed`. With a status other than 200 and 404 the body is still downloaded, and
  /// `m_strErrorText` holds the status number. All handles are closed.
  void DownloadUpdateList(std::vector<std::wstring>& sections);
  /// The request path; empty when the address does not name the update location's host, or the location is a
  /// complete address. Logs the case.
  std::wstring GetUpdatePathFromTagThree();
  /// Sets `m_bNetworkError` when `code` is in `NetworkErrorCodes`.
  void MatchNetworkErrorCode(std::wstring_view code);
  /// Sets `m_strErrorText` to " Error : " and `text`, or to nothing for an empty text, and its mirror.
  void SetErrorText(std::wstring_view text);

 private:
  // These return false after a failure, which they have logged and stored. `request` is a HINTERNET.
  // `pending_error` receives a status that is neither 200 nor 404, in decimal.
  bool ProbeConnection();
  bool FetchToFile(const std::wstring& path, ListFile& file, std::wstring& pending_error);
  bool CheckStatus(void* request, std::wstring& pending_error);
  bool CopyBody(void* request, std::uint64_t start_ms, ListFile& file);
  void ReportFailure(std::wstring_view message, unsigned long error);
  void FailWith(std::wstring_view error_text);
  void SetCheckFailed(bool failed);

  const RegisteredDataEntries& product_;
  const UpdateSettings& settings_;
  const CheckVariant& variant_;
  LogSink& log_;
};
