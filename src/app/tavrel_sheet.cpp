#include "app/tavrel_sheet.h"

#include <string>

#include "app/about_texts.h"
#include "framework/dialogs.h"
#include "platform/sharing.h"
#include "product/identity.h"
#include "resource.h"

namespace {

std::wstring AboutText() {
  std::wstring text(about_texts::kVersion);
  text += about_texts::kBuild;
  text += g_strProgramFileVersion;
  text += L"\n\n";
  text += about_texts::kMakerNotice;
  return text;
}

}  // namespace

CTavrelSheet::CTavrelSheet(RunState& run)
    : CPropertySheet(identity::kWindowTitle, IDI_APP),
      SheetUpdateCheck(run),
      patch_page_(run, *this),
      log_page_(*this) {
  AddPage(patch_page_);
  AddPage(log_page_);
}

INT_PTR CTavrelSheet::Run() {
  const INT_PTR result = DoModal();
  platform::g_nWaitLeftMs = platform::kWaitMs;
  // The page writes the header, but a sheet that could not be shown had no page.
  if (!run_.LaunchedFromPatchCheck && SheetLogText().empty()) WriteRegularRunHeader();
  run_.DatedLog().OpenSystemLog();
  return result;
}

void CTavrelSheet::OnInitDialog() {
  const HMENU menu = GetSystemMenu(Handle(), FALSE);
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(menu, MF_STRING, ID_APP_ABOUT, about_texts::kMenuItem);
}

bool CTavrelSheet::OnCommand(int id) {
  switch (id) {
    case ID_APP_ABOUT:
      ShowMessage(AboutText(), MB_OK | MB_ICONINFORMATION, about_texts::kTitle);
      return true;
    case IDHELP:
      // The program has no help, so the button closes the sheet.
      EndDialog(IDCANCEL);
      return true;
    case kHelpCommand:
      return true;
    default:
      return false;
  }
}

bool CTavrelSheet::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  // The user logs off. Windows ends the program after this message, also while a box is open.
  if (message == WM_ENDSESSION && wparam != 0) {
    platform::g_nWaitLeftMs = platform::kWaitMs;
    run_.DatedLog().OpenSystemLog();
  }
  return CPropertySheet::OnMessage(message, wparam, lparam, result);
}
