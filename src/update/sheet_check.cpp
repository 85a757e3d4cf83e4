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
  engine.IdentifyRegistryMode();
  engine.ReadUpdateSettings(run_.SettingsFilePath, facts_.UpdateLocUrlMode,
                            UpdateSettings::WriteBack::nothing);
  engine.ReadClientVersion();
  SheetClientVersion = engine.ClientVersion;
  g_bProductInstalled = SheetClientVersion == identity::kProductVersion;
  if (!g_bProductInstalled) {
    Append(update_texts::kVersionNotFound);
    Append(update_texts::kEntriesEnd);
    return;
  }
  engine.ReadTagOne();
  engine.ReadTagTwo();
  engine.ReadTagThree();
  engine.ReadInstallPathLogged();
  SheetTagOne = engine.TagOne;
  SheetTagTwo = engine.TagTwo;
  SheetTagThree = engine.TagThree;
  SheetInstallPath = engine.GetInstallPath();
  if (!SheetTagThree.empty() && SheetCheckCount == 0) {
    engine.ReadProductFileVersion();
    ApplyBuildVersionToLog(engine.ProductFileVersion);
  }
  Append(update_texts::kEntriesEnd);
  Append(update_texts::kUpdatesStart);
  if (SheetTagTwo.empty() || SheetTagOne.empty() || SheetInstallPath.empty()) {
    Append(update_texts::kEntriesNotFound);
  } else {
    engine.CompareUpdates(SheetTagTwo, SheetTagOne);
    SheetUpdatesAvailable = engine.m_bUpdatesAvailable;
    SheetCheckFailed = engine.m_bCheckFailed;
    SheetErrorText = engine.m_strErrorText;
  }
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
