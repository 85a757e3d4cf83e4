#include "ui/patch_apply.h"

#include "framework/application.h"
#include "framework/dialogs.h"
#include "framework/property_sheet.h"
#include "platform/sharing.h"
#include "resource.h"
#include "settings/run_state.h"
#include "text/text.h"
#include "ui/installer_launch.h"
#include "ui/ui_texts.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

namespace {

constexpr UINT kFirstCheckMessage = WM_APP + 1;

}  // namespace

PatchApply::PatchApply(RunState& run, SheetUpdateCheck& sheet)
    : CPropertyPage(IDD_UPDATES), run_(run), sheet_(sheet) {}

void PatchApply::OnInitDialog() {
  AttachControl(IDC_INSTALL, m_btnInstall);
  AttachControl(IDC_RETRY, m_btnRetry);
  AttachControl(IDC_MESSAGE, m_ctlMessage);
  AttachControl(IDC_CHECK_ON_STARTUP, m_chkCheckOnStartup);
  AttachControl(IDC_HIDE_NETWORK_ERRORS, m_chkHideNetworkErrors);
  AttachControl(IDC_NOTE, m_ctlNote);
  AttachControl(IDC_CONTINUE, m_btnContinue);
  LoadUpdateOptions(run_.SettingsFilePath);
  m_bInteractiveMode = !run_.LaunchedFromPatchCheck;
  if (!m_bInteractiveMode) {
    m_bLastCheckFailed = run_.CheckFailed;
    m_strLastCheckError = g_strPatchErrorText;
    m_bLastUpdatesFound = g_bUpdatesAvailable;
    TakeUpdaterPath(run_.IconPath);
    sheet_.AppendSheetLine(g_strPatchMessageText);
    UpdatePageState();
    PostFocus();
    run_.DatedLog().OpenSystemLog();
    return;
  }
  if (g_nUpdateCheckCount == 0) m_bAdministrator = sheet_.WriteRegularRunHeader();
  // The check blocks this thread until the server has answered, so the sheet must be visible first. The
  // sheet's loop, which dispatches this posted message, begins after the sheet is shown.
  first_check_pending_ = true;
  UpdatePageState();
  PostMessageW(Handle(), kFirstCheckMessage, 0, 0);
}

bool PatchApply::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  if (message != kFirstCheckMessage) return CPropertyPage::OnMessage(message, wparam, lparam, result);
  if (!first_check_pending_) return true;
  Sheet().PaintBeforeBlocking();
  sheet_.RunUpdateCheck();
  if (g_bProductInstalled) TakeUpdaterPathFromSheet();
  first_check_pending_ = false;
  ShowResult();
  return true;
}

void PatchApply::OnSetActive() {
  UpdatePageState();
  CPropertyPage::OnSetActive();
}

void PatchApply::OnCommand(int id, int code) {
  static constexpr struct {
    int id;
    void (PatchApply::*handler)();
  } kClicks[] = {{IDC_INSTALL, &PatchApply::OnInstallUpdates},
                 {IDC_CHECK_ON_STARTUP, &PatchApply::OnCheckAtStartup},
                 {IDC_RETRY, &PatchApply::OnRetry},
                 {IDC_HIDE_NETWORK_ERRORS, &PatchApply::OnHideNetworkErrors},
                 {IDC_CONTINUE, &PatchApply::OnContinueWithoutUpdates}};
  if (code != BN_CLICKED) return;
  // Each action of the user has its own time to wait for files.
  platform::g_nWaitLeftMs = platform::kWaitMs;
  for (const auto& click : kClicks) {
    if (click.id == id) (this->*click.handler)();
  }
}

void PatchApply::OnCheckAtStartup() {
  m_bCheckOnStartup = IsDlgButtonChecked(Handle(), IDC_CHECK_ON_STARTUP) == BST_CHECKED ? 1 : 0;
  WriteCheckUpdatesKey(m_bCheckOnStartup != 0);
}

void PatchApply::OnHideNetworkErrors() {
  m_bHideNetworkErrors = IsDlgButtonChecked(Handle(), IDC_HIDE_NETWORK_ERRORS) == BST_CHECKED ? 1 : 0;
  WriteIgnorePatchErrorKey(m_bHideNetworkErrors != 0);
}

void PatchApply::OnContinueWithoutUpdates() {
  EndDialog(IDOK);
}

void PatchApply::BuildUpdaterCommand() {
  // One pair of quotes encloses the whole command; the file is not quoted separately.
  m_strUpdaterCommand = L"/c \"" + m_strUpdaterFile + L" /update\"";
}

void PatchApply::OnInstallUpdates() {
  // When nothing is launched, the next message that sets the cursor ends the wait cursor.
  SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  const std::wstring obstacle = LaunchObstacle(m_strUpdaterFolder, m_strUpdaterFile);
  if (!obstacle.empty()) {
    sheet_.Append(obstacle);
    ShowMessage(obstacle + L"\n\n");
    return;
  }
  // No is the default, because the product is closed without a chance to save.
  constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2;
  if (m_bInteractiveMode && ShowMessage(ui_texts::kCloseProduct, kQuestion) != IDYES) return;

  run_.DatedLog().OpenSystemLog();
  CloseRunningProduct();
  BuildUpdaterCommand();
  LaunchUpdate(m_strUpdaterFolder, m_strUpdaterCommand);
  EndDialog(IDOK);
  SetCursor(LoadCursorW(nullptr, IDC_ARROW));
  UpdatePageState();
  CWinApp::Current()->ExitInstance();
}

void PatchApply::OnRetry() {
  ShowState({});
  Sheet().PaintBeforeBlocking();
  if (m_bInteractiveMode) {
    sheet_.RunUpdateCheck();
    TakeUpdaterPathFromSheet();
  } else {
    const CCheckPatch check(run_);
    m_bLastCheckFailed = check.m_bCheckFailed;
    if (check.m_bCheckFailed) m_strLastCheckError = check.m_strErrorText;
    if (check.m_bUpdatesAvailable) {
      m_strUpdaterFolder = text::SplitAtLastBackslash(check.TagTwo).folder;
      // Updates that one check has found stay offered until a later check fails.
      m_bLastUpdatesFound = true;
    }
    sheet_.ClearSheetLog();
    sheet_.AppendSheetLine(check.MessageText());
  }
  ShowResult();
}

void PatchApply::TakeUpdaterPath(const std::wstring& executable) {
  const text::SplitPath path = text::SplitAtLastBackslash(executable);
  m_strUpdaterFolder = path.folder;
  if (!path.file.empty()) m_strUpdaterFile = path.file;
}

void PatchApply::TakeUpdaterPathFromSheet() {
  TakeUpdaterPath(sheet_.SheetTagTwo);
}

void PatchApply::UpdatePageState() {
  CheckDlgButton(Handle(), IDC_CHECK_ON_STARTUP, m_bCheckOnStartup != 0 ? BST_CHECKED : BST_UNCHECKED);
  CheckDlgButton(Handle(), IDC_HIDE_NETWORK_ERRORS, m_bHideNetworkErrors != 0 ? BST_CHECKED : BST_UNCHECKED);
  m_ctlNote.SetText(ui_texts::kNote);
  const PageResults results{.interactive = m_bInteractiveMode,
                            .product_installed = g_bProductInstalled,
                            .sheet_updates_available = sheet_.SheetUpdatesAvailable,
                            .sheet_check_failed = sheet_.SheetCheckFailed,
                            .sheet_error_text = sheet_.SheetErrorText,
                            .last_check_failed = m_bLastCheckFailed,
                            .last_check_error = m_strLastCheckError,
                            .last_updates_found = m_bLastUpdatesFound};
  ShowState(first_check_pending_ ? PageState() : DecidePageState(results));
}

void PatchApply::ShowState(const PageState& state) {
  m_btnInstall.Enable(state.install_enabled);
  m_btnRetry.Enable(state.retry_enabled);
  m_btnContinue.Enable(state.continue_offered);
  m_btnContinue.Show(state.continue_offered);
  m_ctlMessage.SetLinkColor(RGB(0, 0, 0));
  m_ctlMessage.SetText(state.text);
}

void PatchApply::ShowResult() {
  DiscardInput();
  UpdatePageState();
  m_ctlMessage.Announce();
  PostFocus();
  run_.DatedLog().OpenSystemLog();
  NotifySiblings();
}

HWND PatchApply::FocusTarget() const {
  for (const CButton* action : {&m_btnInstall, &m_btnRetry}) {
    if (IsWindowEnabled(action->Handle())) return action->Handle();
  }
  return GetDlgItem(Sheet().Handle(), IDOK);
}
