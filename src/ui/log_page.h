#pragma once

#include <string>

#include "framework/controls.h"
#include "framework/property_page.h"
#include "ui/link_control.h"

class SheetLog;

/// The sheet's log page: shows the sheet log, saves it to a file of the user's choice and links to the dated
/// log file.
class CLogTrace : public CPropertyPage {
 public:
  /// `log` outlives the page, which never changes it.
  explicit CLogTrace(const SheetLog& log);

 protected:
  void OnInitDialog() override;
  void OnSetActive() override;
  void OnSiblingChanged() override;
  HWND FocusTarget() const override;
  void OnCommand(int id, int code) override;

 private:
  void ShowLog();
  void OnSave();
  bool SaveTo(const std::wstring& path) const;

  const SheetLog& log_;
  CReadOnlyEdit log_text_;
  CButton save_button_;
  CLogFileLink log_file_link_;
  std::wstring shown_log_;  ///< copy of the sheet log that the page shows
};
