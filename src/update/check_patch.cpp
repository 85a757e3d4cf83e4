#include "update/check_patch.h"

#include "update/process_state.h"
#include "update/update_texts.h"

namespace {

constexpr CheckVariant kStartUpCheck{
    .agent = update_texts::kAgent,
    .record_found = update_texts::kRecordFound,
    .record_deleted = update_texts::kRecordDeleted,
};

}  // namespace

CCheckPatch::CCheckPatch(RunState& run) : UpdateEngine(run, *this, kStartUpCheck), run_(run) {
  const bool first_check = g_nUpdateCheckCount == 0;
  if (!first_check) Append(update_texts::kRetry);
  Append(update_texts::kEntriesStart);
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
  Append(update_texts::kEntriesEnd);
  Append(update_texts::kUpdatesStart);
  if (TagOne.empty() || TagTwo.empty() || TagThree.empty()) {
    if (run_.WarnUser) run_.WarnUser(update_texts::kMissingFacts);
    SetUpdatesAvailable(false);
  } else {
    CompareUpdates(TagTwo, TagOne);
  }
  ++g_nUpdateCheckCount;
  Append(update_texts::kUpdatesEnd);
  g_strPatchMessageText = message_text_;
}

void CCheckPatch::Append(std::wstring_view entry) {
  run_.AppendLogLine(entry);
  if (!message_text_.empty()) message_text_ += L"\n\n";
  message_text_ += entry;
}

void CCheckPatch::SetErrorText(std::wstring_view text) {
  UpdateEngine::SetErrorText(text);
  g_strPatchErrorText = m_strErrorText;
}

void CCheckPatch::SetCheckFailed(bool failed) {
  g_bCheckFailed = m_bCheckFailed = failed;
}

void CCheckPatch::SetUpdatesAvailable(bool available) {
  g_bUpdatesAvailable = m_bUpdatesAvailable = available;
}

void CCheckPatch::ReadUpdateSettings() {
  UpdateEngine::ReadUpdateSettings(run_.SettingsFilePath, run_.UpdateLocUrlMode, WriteBack::defaults);
}
