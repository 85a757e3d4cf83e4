#include "app/tavrel_app.h"

#include <windows.h>

#include "app/tavrel_sheet.h"
#include "framework/dialogs.h"
#include "platform/folders.h"
#include "platform/version_resource.h"
#include "product/identity.h"
#include "update/check_patch.h"

namespace {

/// The program's one parameter: "2" anywhere on the command line asks for the start-up check. No other
/// parameter has an effect.
class CustomCommandInfo : public CCommandLineInfo {
 public:
  int regular_mode = 1;  ///< 0 when the parameter was found

  void ParseParam(const wchar_t* text, bool /*is_switch*/, bool /*is_last*/) override {
    if (lstrcmpiW(text, L"2") == 0) regular_mode = 0;
  }
};

}  // namespace

BOOL CQRTTavrelUtilityApp::InitInstance() {
  CWinApp::InitInstance();
  SetRegistryKey(L"Local AppWizard-Generated Applications");
  InitialiseRunState();
  WriteRunHeader();
  const bool check_updates = PrepareServerSettings();

  CustomCommandInfo command_info;
  ParseCommandLine(command_info);
  const bool regular = command_info.regular_mode != 0;
  if (!regular && !check_updates) return 0;
  ResolveSettingsFile();
  LaunchedFromPatchCheck = !regular && RunStartUpCheck();
  if (regular || LaunchedFromPatchCheck) {
    CTavrelSheet sheet(*this);
    SetMainWindow(&sheet);
    sheet.Run();
    SetMainWindow(nullptr);
  } else {
    DatedLog().OpenSystemLog();
  }
  return 0;
}

void CQRTTavrelUtilityApp::InitialiseRunState() {
  ProgramVersion = identity::kProgramVersion;
  ProductLabel = identity::kProductLabel;
  WindowTitle = identity::kWindowTitle;
  SetTitle(WindowTitle);
  WarnUser = [this](std::wstring_view text) {
    // A user can log off while the box is open.
    DatedLog().OpenSystemLog();
    ShowMessage(std::wstring(text));
  };
  if (const auto version = platform::ReadFileVersion(platform::ModulePath())) {
    g_strProgramFileVersion = platform::FileVersionText(*version);
  }
}

bool CQRTTavrelUtilityApp::RunStartUpCheck() {
  const CCheckPatch check(*this);
  // A network failure that the settings hide wins over an available update.
  if (check.m_bNetworkError && check.IgnorePatchError) return false;
  CheckFailed = check.m_bCheckFailed;
  return check.m_bUpdatesAvailable || check.m_bCheckFailed;
}
