#include <windows.h>

#include "app/tavrel_app.h"
#include "platform/system_library.h"

int WINAPI wWinMain(_In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR, _In_ int) {
  // Called before any library is loaded by name. Our static imports are KnownDLLs, so they cannot be
  // hijacked.
  platform::SearchSystemFolderOnly();
  CQRTTavrelUtilityApp app;
  return app.Run(instance);
}
