#include <windows.h>

#include "app/tavrel_app.h"
#include "platform/system_library.h"

int WINAPI wWinMain(_In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR, _In_ int) {
  // Before anything is loaded by name. What is bound with the program is on the list of libraries that
  // Windows takes from its own folder alone, so no file beside the program takes the place of any.
  platform::SearchSystemFolderOnly();
  CQRTTavrelUtilityApp app;
  return app.Run(instance);
}
