// A stand-in for the installed product, for the demo and the tests.
//
// Started with arguments it takes the place of the self-update: it writes how it was started to
// "qrt-arguments.txt" beside its executable (one UTF-8 line per argument, then the current folder) and ends.
// Started without arguments it shows a window until that is closed, five minutes at most.

#include <windows.h>

#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/system_text.h"
#include "text/text.h"
#include "version.h"

namespace {

constexpr UINT kLongestRunMs = 5 * 60 * 1000;

// The note gets its name only when it is complete, so that a reader never sees a part of it.
bool WriteNote() {
  std::string text;
  for (int i = 1; i < __argc; ++i) text += platform::ToUtf8(__wargv[i]) + "\r\n";
  wchar_t current_folder[MAX_PATH]{};
  GetCurrentDirectoryW(MAX_PATH, current_folder);
  text += platform::ToUtf8(current_folder) + "\r\n";
  const std::wstring program = platform::ModulePath();
  const std::wstring folder(text::SplitAtLastBackslash(program).folder);
  const std::wstring note = folder + L"\\qrt-arguments.txt", draft = note + L".new";
  return platform::CreateWithContent(draft, text) &&
         MoveFileExW(draft.c_str(), note.c_str(), MOVEFILE_REPLACE_EXISTING);
}

void CALLBACK EndProgram(HWND, UINT, UINT_PTR, DWORD) {
  ExitProcess(0);
}

}  // namespace

int WINAPI wWinMain(_In_ HINSTANCE, _In_opt_ HINSTANCE, _In_ PWSTR, _In_ int) {
  if (__argc > 1) return WriteNote() ? 0 : 1;
  SetTimer(nullptr, 0, kLongestRunMs, EndProgram);
  MessageBoxW(nullptr, L"The product runs until you close this box.", L"" TAVREL_PRODUCT_LABEL " (stand-in)",
              MB_OK);
  return 0;
}
