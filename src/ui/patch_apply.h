#pragma once

#include <string>

#include "framework/controls.h"
#include "framework/property_page.h"
#include "ui/link_control.h"
#include "ui/page_rules.h"
#include "ui/update_options.h"

class RunState;
class SheetUpdateCheck;

/// The sheet's first page: shows what a check found, retries it, keeps the two update options in the settings
/// file and starts the product's own update.
class PatchApply : public CPropertyPage, private UpdateOptions {
 public:
  /// Both outlive the page. With `run.LaunchedFromPatchCheck` the page shows the result of the start-up
  /// check; otherwise it runs the interactive check when it is first shown.
  PatchApply(RunState& run, SheetUpdateCheck& sheet);

 protected:
  void OnInitDialog() override;
  void OnSetActive() override;
  HWND FocusTarget() const override;
  void OnCommand(int id, int code) override;
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;

 private:
  // Message handlers.
  void OnInstallUpdates();
  void OnCheckAtStartup();
  void OnRetry();
  void OnHideNetworkErrors();
  void OnContinueWithoutUpdates();

  void TakeUpdaterPath(const std::wstring& executable);
  void TakeUpdaterPathFromSheet();
  /// Sets m_strUpdaterCommand from m_strUpdaterFile.
  void BuildUpdaterCommand();

  void UpdatePageState();
  void ShowState(const PageState& state);
  /// After a check: shows its result, writes its log to the dated file, and refreshes the other page.
  void ShowResult();

  RunState& run_;
  SheetUpdateCheck& sheet_;

  CStatic m_ctlNote;
  CButton m_btnInstall;
  CButton m_btnRetry;
  CButton m_btnContinue;
  CSysURL m_ctlMessage;
  bool m_bInteractiveMode = true;
  std::wstring m_strUpdaterFolder;  ///< folder of the product executable, without its last backslash
  std::wstring m_strUpdaterFile;
  std::wstring m_strUpdaterCommand;  ///< parameters for the command interpreter
  CButton m_chkCheckOnStartup;
  CButton m_chkHideNetworkErrors;
  // Results of the start-up checks so far.
  bool m_bLastCheckFailed = false;
  std::wstring m_strLastCheckError;
  bool m_bLastUpdatesFound = false;

  /// Result of IsRunningAsAdmin; true only on the page that has written the run header.
  bool m_bAdministrator = false;
  bool first_check_pending_ = false;  ///< the first interactive check has not run yet
};
