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

CCheckPatch::CCheckPatch(RunState& run) : log_(run), engine_(run, log_, kStartUpCheck) {
  const bool first_check = g_nUpdateCheckCount == 0;
  if (!first_check) log_.Append(update_texts::kRetry);
  log_.Append(update_texts::kEntriesStart);
  ReadFacts(run, first_check);
  log_.Append(update_texts::kEntriesEnd);
  log_.Append(update_texts::kUpdatesStart);
  CheckAvailability(run);
  ++g_nUpdateCheckCount;
  log_.Append(update_texts::kUpdatesEnd);
  g_strPatchMessageText = MessageText();
}

void CCheckPatch::ReadFacts(RunState& run, bool first_check) {
  RegisteredDataEntries& entries = engine_.entries;
  entries.IdentifyRegistryMode();
  engine_.settings.ReadUpdateSettings(run.SettingsFilePath, run.UpdateLocUrlMode,
                                      UpdateSettings::WriteBack::defaults);
  entries.ReadTagOne();
  entries.ReadTagTwo();
  entries.ReadTagThree();
  entries.ReadInstallPath();
  if (first_check && !entries.GetInstallPath().empty()) {
    entries.ReadProductFileVersion();
    run.ApplyBuildVersionToLog(ProductFileVersion);
  }
}

void CCheckPatch::CheckAvailability(RunState& run) {
  if (TagOne.empty() || TagTwo.empty() || TagThree.empty()) {
    if (run.WarnUser) run.WarnUser(update_texts::kMissingFacts);
    engine_.comparison.SetUpdatesAvailable(false);
    return;
  }
  engine_.exchange.FillNetworkErrorCodes();
  engine_.comparison.CompareUpdates(TagTwo, TagOne);
}
