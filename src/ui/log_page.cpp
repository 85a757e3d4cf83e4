#include "ui/log_page.h"

#include "framework/dialogs.h"
#include "framework/property_sheet.h"
#include "log/activity_log.h"
#include "log/log_rules.h"
#include "log/system_log.h"
#include "platform/files.h"
#include "platform/sharing.h"
#include "platform/system_text.h"
#include "resource.h"
#include "text/text.h"
#include "ui/page_rules.h"
#include "ui/ui_texts.h"

CLogTrace::CLogTrace(const SheetLog& log) : CPropertyPage(IDD_LOG), log_(log) {}

void CLogTrace::OnInitDialog() {
  AttachControl(IDC_LOG_TEXT, log_text_);
  AttachControl(IDC_SAVE_LOG, save_button_);
  AttachControl(IDC_LOG_FILE, log_file_link_);
  ShowLog();
}

void CLogTrace::OnSetActive() {
  ShowLog();
  CPropertyPage::OnSetActive();
}

HWND CLogTrace::FocusTarget() const {
  return save_button_.Handle();
}

void CLogTrace::OnCommand(int id, int code) {
  if (id != IDC_SAVE_LOG || code != BN_CLICKED) return;
  platform::g_nWaitLeftMs = platform::kWaitMs;
  OnSave();
}

void CLogTrace::OnSiblingChanged() {
  if (IsWindowVisible(Handle())) ShowLog();
}

void CLogTrace::ShowLog() {
  // An unchanged text keeps its selection and scroll position.
  if (shown_log_ != log_.SheetLogText()) {
    shown_log_ = log_.SheetLogText();
    std::wstring lines = shown_log_;
    text::ReplaceAll(lines, L"\n", L"\r\n");
    log_text_.SetText(lines);
    // Scrolls to the end, where the result of the last check is.
    const LRESULT end = GetWindowTextLengthW(log_text_.Handle());
    SendMessageW(log_text_.Handle(), EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(log_text_.Handle(), EM_SCROLLCARET, 0, 0);
  }
  RECT text_area = {};
  GetWindowRect(log_text_.Handle(), &text_area);
  log_file_link_.ShowPath(g_strCurrentLogFile, text_area.right - text_area.left);
  save_button_.Enable(!shown_log_.empty());
  if (!shown_log_.empty()) PostFocus();
}

void CLogTrace::OnSave() {
  const std::optional<std::wstring> chosen =
      AskSavePath(Sheet().Handle(), ui_texts::kSaveExtension, ui_texts::kSaveFilter);
  if (!chosen) return;
  const std::optional<std::wstring> path = SavedLogPath(*chosen);
  if (!path) {
    ShowMessage(ui_texts::kBadFileName, MB_OK | MB_ICONINFORMATION);
  } else if (SaveTo(*path)) {
    ShowMessage(ui_texts::kLogSaved, MB_OK | MB_ICONINFORMATION);
  } else {
    ShowMessage(ui_texts::kLogNotSaved);
  }
}

bool CLogTrace::SaveTo(const std::wstring& path) const {
  const auto file = platform::OpenShared(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
  return file && platform::WriteAll(file.get(), log_rules::WithCrLf(platform::ToUtf8(shown_log_)));
}
