#include "update/check_patch.h"

#include "update/process_state.h"
#include "update/update_texts.h"

namespace {

constexpr CheckVariant kStartUpCheck{
    update_texts::kAgent, update_texts::kRecordFound, update_texts::kRecordDeleted, &g_bUpdatesAvailable,
    &g_bCheckFailed,      &g_strPatchErrorText};

}  // namespace

void CheckLog::Append(std::wstring_view entry) {
  log_.AppendLogLine(entry);
  if (!text_.empty()) text_ += L"\n\n";
  text_ += entry;
}

CCheckPatch::CCheckPatch(RunState& run)
    : CheckLog(run), UpdateEngine(run, static_cast<CheckLog&>(*this), kStartUpCheck) {
  const bool first_check = g_nUpdateCheckCount == 0;
  if (!first_check) Append(update_texts::kRetry);
  Append(update_texts::kEntriesStart);
  ReadFacts(run, first_check);
  Append(update_texts::kEntriesEnd);
  Append(update_texts::kUpdatesStart);
  CheckAvailability(run);
  ++g_nUpdateCheckCount;
  Append(update_texts::kUpdatesEnd);
  g_strPatchMessageText = MessageText();
}

void CCheckPatch::ReadFacts(RunState& run, bool first_check) {
  IdentifyRegistryMode();
  ReadUpdateSettings(run.SettingsFilePath, run.UpdateLocUrlMode, WriteBack::defaults);
  ReadTagOne();
  ReadTagTwo();
  ReadTagThree();
  ReadInstallPath();
  if (first_check && !GetInstallPath().empty()) {
    ReadProductFileVersion();
    run.ApplyBuildVersionToLog(ProductFileVersion);
  }
}

void CCheckPatch::CheckAvailability(RunState& run) {
  if (TagOne.empty() || TagTwo.empty() || TagThree.empty()) {
    if (run.WarnUser) run.WarnUser(update_texts::kMissingFacts);
    m_bUpdatesAvailable = false;
    g_bUpdatesAvailable = false;
    return;
  }
  FillNetworkErrorCodes();
  CompareUpdates(TagTwo, TagOne);
}
