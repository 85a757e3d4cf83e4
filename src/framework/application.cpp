#include "framework/application.h"

#include <objbase.h>
#include <shellapi.h>

#include "framework/command_line.h"

namespace {

CWinApp* g_application = nullptr;

}  // namespace

/// COM for the user-interface thread, as the shell's calls and dialogs want it.
class ComSession {
 public:
  ComSession() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
  ComSession(const ComSession&) = delete;
  ComSession& operator=(const ComSession&) = delete;
  ~ComSession() {
    if (SUCCEEDED(result_)) CoUninitialize();
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
  com_ = std::make_unique<ComSession>();
  return FALSE;
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
