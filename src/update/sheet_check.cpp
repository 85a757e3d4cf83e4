#include "update/sheet_check.h"

#include "product/identity.h"
#include "update/process_state.h"
#include "update/update_engine.h"
#include "update/update_texts.h"

namespace {

constexpr CheckVariant kInteractiveCheck{
    .record_found = update_texts::kRecordFoundInteractive,
    .record_deleted = update_texts::kRecordDeletedInteractive,
};

}  // namespace

void SheetUpdateCheck::RunUpdateCheck() {
  if (g_nUpdateCheckCount != 0) return;
  ClearStatus();
  UpdateEngine engine(facts_, *this, kInteractiveCheck);
  if (SheetCheckCount > 0) Append(update_texts::kRetry);
  Append(update_texts::kEntriesStart);
  engine.entries.IdentifyRegistryMode();
  engine.settings.ReadUpdateSettings(run_.SettingsFilePath, facts_.UpdateLocUrlMode,
                                     UpdateSettings::WriteBack::nothing);
  if (!CheckProductVersion(engine.entries)) return;
  ReadEntries(engine.entries);
  Append(update_texts::kEntriesEnd);
  Append(update_texts::kUpdatesStart);
  Compare(engine);
  ++SheetCheckCount;
  Append(update_texts::kUpdatesEnd);
}

void SheetUpdateCheck::ClearStatus() {
  for (std::wstring* text : {&SheetTagOne, &SheetTagTwo, &SheetInstallPath, &SheetTagThree,
                             &SheetClientVersion, &SheetErrorText, &facts_.InstallPath, &facts_.IconPath}) {
    text->clear();
  }
  SheetUpdatesAvailable = false;
  SheetCheckFailed = false;
}

bool SheetUpdateCheck::CheckProductVersion(RegisteredDataEntries& entries) {
  entries.ReadClientVersion();
  SheetClientVersion = entries.ClientVersion;
  g_bProductInstalled = SheetClientVersion == identity::kProductVersion;
  if (g_bProductInstalled) return true;
  Append(update_texts::kVersionNotFound);
  Append(update_texts::kEntriesEnd);
  return false;
}

void SheetUpdateCheck::ReadEntries(RegisteredDataEntries& entries) {
  entries.ReadTagOne();
  entries.ReadTagTwo();
  entries.ReadTagThree();
  entries.ReadInstallPathLogged();
  SheetTagOne = entries.TagOne;
  SheetTagTwo = entries.TagTwo;
  SheetTagThree = entries.TagThree;
  SheetInstallPath = entries.GetInstallPath();
  if (!SheetTagThree.empty() && SheetCheckCount == 0) {
    entries.ReadProductFileVersion();
    ApplyBuildVersionToLog(entries.ProductFileVersion);
  }
}

void SheetUpdateCheck::Compare(UpdateEngine& engine) {
  if (SheetTagTwo.empty() || SheetTagOne.empty() || SheetInstallPath.empty()) {
    Append(update_texts::kEntriesNotFound);
    return;
  }
  engine.exchange.FillNetworkErrorCodes();
  engine.comparison.CompareUpdates(SheetTagTwo, SheetTagOne);
  SheetUpdatesAvailable = engine.comparison.m_bUpdatesAvailable;
  SheetCheckFailed = engine.exchange.m_bCheckFailed;
  SheetErrorText = engine.exchange.m_strErrorText;
}
