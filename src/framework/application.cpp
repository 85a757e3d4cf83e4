#include "framework/application.h"

#include <objbase.h>
#include <shellapi.h>

#include "framework/command_line.h"
#include "framework/common_controls.h"
#include "platform/system_library.h"

namespace {

platform::SystemLibrary ole(L"ole32.dll");
platform::SystemFunction<decltype(&::CoInitializeEx)> InitializeCom(ole, "CoInitializeEx", E_FAIL);
platform::SystemFunction<decltype(&::CoUninitialize)> UninitializeCom(ole, "CoUninitialize");

CWinApp* g_application = nullptr;

}  // namespace

/// COM for the user-interface thread, as the shell's calls and dialogs want it.
class ComSession {
 public:
  ComSession() : result_(InitializeCom(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
  ComSession(const ComSession&) = delete;
  ComSession& operator=(const ComSession&) = delete;
  ~ComSession() {
    if (SUCCEEDED(result_)) UninitializeCom();
  }

 private:
  HRESULT result_;
};

CWinApp::CWinApp() {
  g_application = this;
}

CWinApp::~CWinApp() {
  g_application = nullptr;
}

CWinApp* CWinApp::Current() {
  return g_application;
}

int CWinApp::Run(HINSTANCE instance) {
  instance_ = instance;
  InitInstance();
  return ExitInstance();
}

BOOL CWinApp::InitInstance() {
  com_wanted_ = true;
  return FALSE;
}

void CWinApp::PrepareWindows() {
  CWinApp* const self = g_application;
  if (self == nullptr) return;
  if (self->common_controls_ != 0) {
    const INITCOMMONCONTROLSEX classes{sizeof classes, self->common_controls_};
    common_controls::InitCommonControlsEx(&classes);
  }
  if (self->com_wanted_) self->com_ = std::make_unique<ComSession>();
  self->common_controls_ = 0;
  self->com_wanted_ = false;
}

int CWinApp::ExitInstance() {
  com_.reset();
  return 0;
}

void CWinApp::ParseCommandLine(CCommandLineInfo& info) {
  int count = 0;
  // One block of the local heap holds the array and the texts.
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                &LocalFree);
  if (arguments != nullptr) ParseArguments(count, arguments.get(), info);
}
