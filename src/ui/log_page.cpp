#include "ui/log_page.h"

#include "framework/file_dialog.h"
#include "framework/message_box.h"
#include "framework/property_sheet.h"
#include "log/log_rules.h"
#include "log/sheet_log.h"
#include "log/system_log.h"
#include "platform/encoding.h"
#include "platform/files.h"
#include "resource.h"
#include "ui/log_saving.h"
#include "ui/ui_texts.h"

CLogTrace::CLogTrace(const SheetLog& log) : CPropertyPage(IDD_LOG), log_(log) {}

void CLogTrace::DoDataExchange(const CDataExchange& exchange) {
  DDX_Control(exchange, IDC_LOG_TEXT, m_edtLog);
  DDX_Control(exchange, IDC_SAVE_LOG, m_btnSave);
  DDX_Control(exchange, IDC_LOG_FILE, m_lnkLogFile);
}

bool CLogTrace::OnInitDialog() {
  CPropertyPage::OnInitDialog();
  SendMessageW(m_edtLog.Handle(), EM_SETLIMITTEXT, 0, 0);  // 0: the largest limit
  ShowLog();
  return true;
}

bool CLogTrace::OnSetActive() {
  ShowLog();
  return CPropertyPage::OnSetActive();
}

HWND CLogTrace::FocusTarget() const {
  return m_btnSave.Handle();
}

void CLogTrace::OnCommand(int id, int code) {
  if (id == IDC_SAVE_LOG && code == BN_CLICKED) OnSave();
}

void CLogTrace::OnSiblingChanged() {
  if (IsWindowVisible(Handle())) ShowLog();
}

void CLogTrace::ShowLog() {
  // An unchanged text keeps its selection and scroll position.
  if (m_strLog != log_.SheetLogText()) {
    m_strLog = log_.SheetLogText();
    m_edtLog.SetText(EditText(m_strLog));
    // Scrolls to the end, where the result of the last check is.
    const LRESULT end = GetWindowTextLengthW(m_edtLog.Handle());
    SendMessageW(m_edtLog.Handle(), EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(m_edtLog.Handle(), EM_SCROLLCARET, 0, 0);
  }
  RECT text_area = {};
  GetWindowRect(m_edtLog.Handle(), &text_area);
  m_lnkLogFile.ShowPath(g_strCurrentLogFile, text_area.right - text_area.left);
  m_btnSave.Enable(!m_strLog.empty());
  if (!m_strLog.empty()) PostFocus();
}

void CLogTrace::OnSave() {
  const std::optional<std::wstring> chosen =
      AskSavePath(Sheet().Handle(), {ui_texts::kSaveExtension, ui_texts::kSaveFilter});
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
  const platform::UniqueFile file = platform::OpenForWriting(path, CREATE_ALWAYS);
  return file && platform::WriteAll(file.get(), log_rules::WithCrLf(platform::ToUtf8(m_strLog)));
}
