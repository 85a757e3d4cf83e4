#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "log/log_sink.h"
#include "settings/run_state.h"
#include "update/update_engine.h"

/// Writes every entry to the activity log and keeps it for display.
class CheckLog : public LogSink {
 public:
  explicit CheckLog(ActivityLog& log) : log_(log) {}
  void Append(std::wstring_view entry) override;
  /// The entries so far, joined by two newlines.
  const std::wstring& Text() const { return text_; }

 private:
  ActivityLog& log_;
  std::wstring text_;
};

/// The check at start-up. The constructor runs a complete check on the calling thread; afterwards the members
/// hold its results, and the globals of process_state.h hold copies. The functions and members are those of
/// the check's steps (update_engine.h), whose classes document them. The private members come first, because
/// the references below are initialised from `engine_`.
class CCheckPatch {
  RunState& run_;
  CheckLog log_;
  UpdateEngine engine_;

 public:
  explicit CCheckPatch(RunState& run);
  CCheckPatch(const CCheckPatch&) = delete;
  CCheckPatch& operator=(const CCheckPatch&) = delete;
  ~CCheckPatch() = default;

  /// Entries of this check, joined by two newlines.
  const std::wstring& MessageText() const { return log_.Text(); }

  bool IdentifyRegistryMode() { return engine_.entries.IdentifyRegistryMode(); }
  void ReadUpdateSettings();
  void ReadTagOne() { engine_.entries.ReadTagOne(); }
  void ReadTagTwo() { engine_.entries.ReadTagTwo(); }
  void ReadTagThree() { engine_.entries.ReadTagThree(); }
  void ReadInstallPath() { engine_.entries.ReadInstallPath(); }
  std::wstring GetInstallPath() const { return engine_.entries.GetInstallPath(); }
  void ReadProductFileVersion() { engine_.entries.ReadProductFileVersion(); }
  void ReadProductVersionNumber() { engine_.entries.ReadProductVersionNumber(); }

  std::wstring GetUpdatePathFromTagThree() { return engine_.exchange.GetUpdatePathFromTagThree(); }
  void DownloadUpdateList(std::vector<std::wstring>& sections) {
    engine_.exchange.DownloadUpdateList(sections);
  }
  void MatchNetworkErrorCode(std::wstring_view code) { engine_.exchange.MatchNetworkErrorCode(code); }
  void SetErrorText(std::wstring_view text) { engine_.exchange.SetErrorText(text); }

  void CompareUpdates(const std::wstring& productIconPath, const std::wstring& productVersion) {
    engine_.comparison.CompareUpdates(productIconPath, productVersion);
  }
  void FindLatestPack() { engine_.comparison.FindLatestPack(); }
  void ReadRecordVersion(std::wstring_view text) { engine_.comparison.ReadRecordVersion(text); }
  std::wstring ReadInstalledRecord(const std::wstring& path) {
    return engine_.comparison.ReadInstalledRecord(path);
  }

  const std::wstring& TagOne = engine_.entries.TagOne;
  const std::wstring& TagTwo = engine_.entries.TagTwo;
  const std::wstring& TagThree = engine_.entries.TagThree;
  const std::wstring& ProductFileVersion = engine_.entries.ProductFileVersion;
  const std::wstring& ProductVersionThird = engine_.entries.ProductVersionThird;
  const std::wstring& ProductVersionFourth = engine_.entries.ProductVersionFourth;
  const std::int32_t& ProductVersionNumber = engine_.entries.ProductVersionNumber;

  const std::wstring& UpdateLocation = engine_.settings.UpdateLocation;
  const bool& UpdateLocationSet = engine_.settings.UpdateLocationSet;
  const bool& IgnorePatchError = engine_.settings.IgnorePatchError;
  const std::int32_t& TimeoutMs = engine_.settings.TimeoutMs;

  const std::wstring& m_strErrorText = engine_.exchange.m_strErrorText;
  const std::vector<std::wstring>& NetworkErrorCodes = engine_.exchange.NetworkErrorCodes;
  const bool& m_bCheckFailed = engine_.exchange.m_bCheckFailed;
  const bool& m_bNetworkError = engine_.exchange.m_bNetworkError;

  const bool& m_bUpdatesAvailable = engine_.comparison.m_bUpdatesAvailable;
  const std::vector<std::wstring>& UpdateSections = engine_.comparison.UpdateSections;
  const std::int32_t& LatestBuild = engine_.comparison.LatestBuild;
  const std::int32_t& LatestLevel = engine_.comparison.LatestLevel;
  const std::int32_t& RecordVersionNumber = engine_.comparison.RecordVersionNumber;

 private:
  void ReadFacts(bool first_check);
  void CheckAvailability();
};
