#include "ui/patch_apply.h"

#include "framework/property_sheet.h"
#include "log/system_log.h"
#include "platform/profile.h"
#include "resource.h"
#include "settings/run_state.h"
#include "settings/settings_texts.h"
#include "settings/update_settings.h"
#include "text/text.h"
#include "ui/readable_color.h"
#include "ui/ui_texts.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"

namespace {

constexpr UINT_PTR kFirstCheckTimer = 1;
// Milliseconds between the sheet's appearance and its first check. A timer speaks up only after everything is
// painted; the rest is for a window manager that shows the frame first.
constexpr UINT kFirstCheckDelay = 100;
constexpr UINT kFocusNextActionMessage = WM_APP + 1;

enum class OptionText { missing, yes, no, malformed };

const wchar_t* BooleanText(bool value) {
  return value ? settings_texts::kTrue : settings_texts::kFalse;
}

OptionText ReadOption(const std::wstring& file, const wchar_t* key) {
  const std::wstring value = platform::ReadProfileText(file, kSettingsSection, key, kSettingsValueCapacity);
  const std::wstring_view option = text::Trim(value);
  if (option.empty()) return OptionText::missing;
  if (!text::IsBooleanText(option)) return OptionText::malformed;
  return text::IsTrueText(option) ? OptionText::yes : OptionText::no;
}

/// Escape or Alt+F4. Keys come as system keys while no control has the focus.
bool IsClosingKey(const MSG& message) {
  if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
  const bool alt = (HIWORD(message.lParam) & KF_ALTDOWN) != 0;
  return message.wParam == (alt ? VK_F4 : VK_ESCAPE);
}

/// Black, except where the user's colours, such as white on black, make it disappear.
COLORREF StatusColor() {
  constexpr COLORREF kBlack = RGB(0, 0, 0);
  return IsReadableOnFace(kBlack) ? kBlack : GetSysColor(COLOR_BTNTEXT);
}

}  // namespace

PatchApply::PatchApply(RunState& run, SheetUpdateCheck& sheet, SystemLog& system_log)
    : CPropertyPage(IDD_UPDATES), run_(run), sheet_(sheet), system_log_(system_log) {}

void PatchApply::DoDataExchange(const CDataExchange& exchange) {
  DDX_Control(exchange, IDC_INSTALL, m_btnInstall);
  DDX_Control(exchange, IDC_RETRY, m_btnRetry);
  DDX_Control(exchange, IDC_MESSAGE, m_ctlMessage);
  DDX_Control(exchange, IDC_CHECK_ON_STARTUP, m_chkCheckOnStartup);
  DDX_Check(exchange, IDC_CHECK_ON_STARTUP, m_bCheckOnStartup);
  DDX_Control(exchange, IDC_HIDE_NETWORK_ERRORS, m_chkHideNetworkErrors);
  DDX_Check(exchange, IDC_HIDE_NETWORK_ERRORS, m_bHideNetworkErrors);
  DDX_Control(exchange, IDC_NOTE, m_ctlNote);
  DDX_Control(exchange, IDC_CONTINUE, m_btnContinue);
}

bool PatchApply::OnInitDialog() {
  CPropertyPage::OnInitDialog();
  LoadUpdateOptions();
  m_bInteractiveMode = !run_.LaunchedFromPatchCheck;
  if (!m_bInteractiveMode) {
    TakeStartUpResult();
    UpdatePageState();
    PostMessageW(Handle(), kFocusNextActionMessage, 0, 0);
    system_log_.AppendText(run_.LogText());
    system_log_.OpenSystemLog();
    return true;
  }
  // The check blocks this thread for as long as the server takes: the sheet is shown before it.
  m_bFirstCheckPending = true;
  UpdatePageState();
  if (SetTimer(Handle(), kFirstCheckTimer, kFirstCheckDelay, nullptr) == 0) {
    PostMessageW(Handle(), WM_TIMER, kFirstCheckTimer, 0);
  }
  return true;
}

bool PatchApply::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_TIMER:
      if (wparam != kFirstCheckTimer) return false;
      KillTimer(Handle(), kFirstCheckTimer);
      if (m_bFirstCheckPending) OnFirstCheck();
      return true;
    case kFocusNextActionMessage:
      FocusNextAction();
      return true;
    default:
      return CPropertyPage::OnMessage(message, wparam, lparam, result);
  }
}

void PatchApply::OnFirstCheck() {
  Sheet().PaintBeforeBlocking();
  if (g_nUpdateCheckCount == 0) {
    m_bAdministrator = sheet_.WriteRegularRunHeader();
    sheet_.RunUpdateCheck();
  }
  if (g_bProductInstalled) TakeUpdaterPathFromSheet();
  m_bFirstCheckPending = false;
  DiscardInput();
  UpdatePageState();
  FocusNextAction();
  system_log_.AppendText(sheet_.SheetLogText());
  system_log_.OpenSystemLog();
}

bool PatchApply::OnSetActive() {
  UpdatePageState();
  return CPropertyPage::OnSetActive();
}

void PatchApply::OnCommand(int id, int code) {
  if (code != BN_CLICKED) return;
  switch (id) {
    case IDC_INSTALL:
      OnInstallUpdates();
      break;
    case IDC_CHECK_ON_STARTUP:
      OnCheckAtStartup();
      break;
    case IDC_RETRY:
      OnRetry();
      break;
    case IDC_HIDE_NETWORK_ERRORS:
      OnHideNetworkErrors();
      break;
    case IDC_CONTINUE:
      OnContinueWithoutUpdates();
      break;
    default:
      break;
  }
}

void PatchApply::LoadUpdateOptions() {
  if (run_.SettingsFilePath.empty()) return;
  m_bSettingsFileKnown = true;
  m_strSettingsFile = run_.SettingsFilePath;

  const OptionText check = ReadOption(m_strSettingsFile, settings_texts::kCheckUpdatesKey);
  m_bCheckOnStartup = check == OptionText::no ? 0 : 1;
  if (check == OptionText::missing || check == OptionText::malformed) WriteCheckUpdatesKey(true);

  const OptionText hide = ReadOption(m_strSettingsFile, settings_texts::kIgnorePatchErrorKey);
  m_bHideNetworkErrors = hide == OptionText::yes ? 1 : 0;
  if (hide == OptionText::missing) WriteIgnorePatchErrorKey(false);
  // On purpose the other key: a value that cannot be understood switches the check at start-up off and stays
  // in the file for whoever wrote it.
  if (hide == OptionText::malformed) WriteCheckUpdatesKey(false);
}

void PatchApply::WriteCheckUpdatesKey(bool value) {
  if (!m_bSettingsFileKnown) return;
  platform::WriteProfileText(m_strSettingsFile, kSettingsSection, settings_texts::kCheckUpdatesKey,
                             BooleanText(value));
}

void PatchApply::WriteIgnorePatchErrorKey(bool value) {
  if (!m_bSettingsFileKnown) return;
  platform::WriteProfileText(m_strSettingsFile, kSettingsSection, settings_texts::kIgnorePatchErrorKey,
                             BooleanText(value));
}

void PatchApply::OnCheckAtStartup() {
  UpdateData(true);
  m_chkCheckOnStartup.SetCheck(m_bCheckOnStartup != 0);
  WriteCheckUpdatesKey(m_bCheckOnStartup != 0);
}

void PatchApply::OnHideNetworkErrors() {
  UpdateData(true);
  m_chkHideNetworkErrors.SetCheck(m_bHideNetworkErrors != 0);
  WriteIgnorePatchErrorKey(m_bHideNetworkErrors != 0);
}

void PatchApply::OnContinueWithoutUpdates() {
  EndDialog(IDOK);
}

void PatchApply::TakeStartUpResult() {
  m_bLastCheckFailed = run_.CheckFailed;
  m_strLastCheckError = g_strPatchErrorText;
  TakeUpdaterPath(run_.IconPath);
  if (g_bUpdatesAvailable) m_bLastUpdatesFound = true;
  sheet_.AppendSheetLine(g_strPatchMessageText);
}

void PatchApply::OnRetry() {
  ClearBeforeCheck();
  m_bInteractiveMode = !run_.LaunchedFromPatchCheck;
  if (m_bInteractiveMode) {
    sheet_.RunUpdateCheck();
    TakeUpdaterPathFromSheet();
  } else {
    RetryPatchCheck();
  }
  DiscardInput();
  UpdatePageState();
  FocusNextAction();
}

void PatchApply::RetryPatchCheck() {
  const CCheckPatch check(run_);
  m_bLastCheckFailed = check.m_bCheckFailed;
  if (check.m_bCheckFailed) m_strLastCheckError = check.m_strErrorText;
  if (check.m_bUpdatesAvailable) {
    m_strUpdaterFolder = text::SplitAtLastBackslash(check.TagTwo).folder;
    // Updates that any check found stay offered until a later check fails.
    m_bLastUpdatesFound = true;
  }
  sheet_.ClearSheetLog();
  sheet_.AppendSheetLine(check.MessageText());
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
  m_chkCheckOnStartup.SetCheck(m_bCheckOnStartup != 0);
  m_chkHideNetworkErrors.SetCheck(m_bHideNetworkErrors != 0);
  m_ctlNote.SetText(ui_texts::kNote);
  if (m_bFirstCheckPending) {
    ShowState({});
    return;
  }
  PageResults results;
  results.interactive = m_bInteractiveMode;
  results.product_installed = g_bProductInstalled;
  results.sheet_updates_available = sheet_.SheetUpdatesAvailable;
  results.sheet_check_failed = sheet_.SheetCheckFailed;
  results.sheet_error_text = sheet_.SheetErrorText;
  results.last_check_failed = m_bLastCheckFailed;
  results.last_check_error = m_strLastCheckError;
  results.last_updates_found = m_bLastUpdatesFound;
  ShowState(DecidePageState(results));
}

void PatchApply::ShowState(const PageState& state) {
  m_btnInstall.Enable(state.install_enabled);
  m_btnRetry.Enable(state.retry_enabled);
  m_btnContinue.Enable(state.continue_offered);
  m_btnContinue.Show(state.continue_offered);
  m_ctlMessage.m_crText = StatusColor();
  m_ctlMessage.RedrawNow();
  m_ctlMessage.SetText(state.text);
}

void PatchApply::ClearBeforeCheck() {
  ShowState({});
  Sheet().PaintBeforeBlocking();
}

void PatchApply::DiscardInput() {
  // What was clicked or typed while the check ran was meant for what stood there then, not for a button
  // enabled since. Only the wish to leave is kept.
  MSG message;
  while (PeekMessageW(&message, Handle(), WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, PM_REMOVE)) {
  }
  bool leave = false;
  while (PeekMessageW(&message, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE)) {
    leave = leave || IsClosingKey(message);
  }
  if (leave) PostMessageW(Sheet().Handle(), WM_CLOSE, 0, 0);
}

void PatchApply::FocusNextAction() {
  if (!IsWindowVisible(Handle())) return;
  HWND next = GetDlgItem(Sheet().Handle(), IDOK);
  for (const CButton* action : {&m_btnInstall, &m_btnRetry}) {
    if (!IsWindowEnabled(action->Handle())) continue;
    next = action->Handle();
    break;
  }
  // The dialog's own way to move the focus keeps the default button right.
  SendMessageW(Sheet().Handle(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
}
