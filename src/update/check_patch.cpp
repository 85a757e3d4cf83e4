#include "update/check_patch.h"

#include "update/process_state.h"
#include "update/update_texts.h"

namespace {

constexpr CheckVariant kStartUpCheck{
    .agent = update_texts::kAgent,
    .record_found = update_texts::kRecordFound,
    .record_deleted = update_texts::kRecordDeleted,
    .updates_available_mirror = &g_bUpdatesAvailable,
    .check_failed_mirror = &g_bCheckFailed,
    .error_text_mirror = &g_strPatchErrorText,
};

}  // namespace

void CheckLog::Append(std::wstring_view entry) {
  log_.AppendLogLine(entry);
  if (!text_.empty()) text_ += L"\n\n";
  text_ += entry;
}

CCheckPatch::CCheckPatch(RunState& run) : run_(run), log_(run), engine_(run, log_, kStartUpCheck) {
  const bool first_check = g_nUpdateCheckCount == 0;
  if (!first_check) log_.Append(update_texts::kRetry);
  log_.Append(update_texts::kEntriesStart);
  ReadFacts(first_check);
  log_.Append(update_texts::kEntriesEnd);
  log_.Append(update_texts::kUpdatesStart);
  CheckAvailability();
  ++g_nUpdateCheckCount;
  log_.Append(update_texts::kUpdatesEnd);
  g_strPatchMessageText = MessageText();
}

void CCheckPatch::ReadUpdateSettings() {
  engine_.settings.ReadUpdateSettings(run_.SettingsFilePath, run_.UpdateLocUrlMode,
                                      UpdateSettings::WriteBack::defaults);
}

void CCheckPatch::ReadFacts(bool first_check) {
  IdentifyRegistryMode();
  ReadUpdateSettings();
  ReadTagOne();
  ReadTagTwo();
  ReadTagThree();
  ReadInstallPath();
  if (first_check && !GetInstallPath().empty()) {
    ReadProductFileVersion();
    run_.ApplyBuildVersionToLog(ProductFileVersion);
  }
}

void CCheckPatch::CheckAvailability() {
  if (TagOne.empty() || TagTwo.empty() || TagThree.empty()) {
    if (run_.WarnUser) run_.WarnUser(update_texts::kMissingFacts);
    engine_.comparison.SetUpdatesAvailable(false);
    return;
  }
  engine_.exchange.FillNetworkErrorCodes();
  CompareUpdates(TagTwo, TagOne);
}
