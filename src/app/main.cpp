#include <windows.h>

#include "app/tavrel_app.h"
#include "platform/system_library.h"

int WINAPI wWinMain(_In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR, _In_ int) {
  // Before anything is loaded by name. The static imports are KnownDLLs, so no file beside the program can
  // replace them.
  platform::SearchSystemFolderOnly();
  CQRTTavrelUtilityApp app;
  return app.Run(instance);
}
