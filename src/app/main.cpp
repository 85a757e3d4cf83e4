#include <windows.h>

#include "app/tavrel_app.h"
#include "platform/system_library.h"

int WINAPI wWinMain(_In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR, _In_ int) {
  // Must come before the first library loaded by name. Static imports are KnownDLLs: Windows takes them from
  // its own folder only.
  platform::SearchSystemFolderOnly();
  CQRTTavrelUtilityApp app;
  return app.Run(instance);
}
