#pragma once

#include <string>

#include "framework/controls.h"
#include "framework/property_page.h"
#include "ui/log_file_link.h"

class SheetLog;

/// The sheet's log page: shows the sheet log, saves it to a file of the user's choice and links to the dated
/// log file.
class CLogTrace : public CPropertyPage {
 public:
  /// `log` outlives the page, which never changes it.
  explicit CLogTrace(const SheetLog& log);

 protected:
  void DoDataExchange(const CDataExchange& exchange) override;
  bool OnInitDialog() override;
  bool OnSetActive() override;
  void OnSiblingChanged() override;
  HWND FocusTarget() const override;
  void OnCommand(int id, int code) override;

 private:
  void ShowLog();
  void OnSave();
  bool SaveTo(const std::wstring& path) const;

  const SheetLog& log_;
  CReadOnlyEdit m_edtLog;
  CButton m_btnSave;
  CLogFileLink m_lnkLogFile;
  std::wstring m_strLog;  ///< copy of the sheet log that the page shows
};
