#include <windows.h>

#include "app/tavrel_app.h"

int WINAPI wWinMain(_In_ HINSTANCE instance, _In_opt_ HINSTANCE, _In_ LPWSTR, _In_ int) {
  // Before anything is loaded by name: no library beside the program takes the place of Windows' own.
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  CQRTTavrelUtilityApp app;
  return app.Run(instance);
}
