#pragma once

#include <windows.h>

#include <tlhelp32.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/folders.h"
#include "resource.h"
#include "support/http_server.h"
#include "support/machine.h"

inline constexpr DWORD kLongestWaitMs = 20000;

/// A list on the server with one pack: 15.0.2.7.
inline constexpr char kOnePack[] = "[Update Packs for Versions]\r\n15.0=\r\n[Varnexa15_0_2_7]\r\nSize=1\r\n";

inline bool WaitUntil(const std::function<bool()>& condition, DWORD milliseconds = kLongestWaitMs) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  while (!condition()) {
    if (GetTickCount64() >= end) return false;
    Sleep(10);
  }
  return true;
}

/// SendMessage's result; 0 when the program does not answer.
inline LRESULT Ask(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
  DWORD_PTR result = 0;
  SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kLongestWaitMs, &result);
  return static_cast<LRESULT>(result);
}

/// Text of a window of another process, in UTF-8, lines ended by "\n".
inline std::string WindowText(HWND window) {
  std::wstring text(65536, L'\0');
  const auto buffer = reinterpret_cast<LPARAM>(text.data());
  text.resize(static_cast<std::size_t>(Ask(window, WM_GETTEXT, text.size(), buffer)));
  std::erase(text, L'\r');
  return support::Utf8(text);
}

/// The control of a dialog or of one of the pages in it; null if there is none.
inline HWND Item(HWND dialog, int id) {
  if (dialog == nullptr) return nullptr;
  HWND item = GetDlgItem(dialog, id);
  for (HWND page = GetTopWindow(dialog); item == nullptr && page != nullptr;
       page = GetWindow(page, GW_HWNDNEXT)) {
    item = GetDlgItem(page, id);
  }
  return item;
}

/// The machine as an installer and a user leave it, in the prefix's own registry and folders: the product at
/// 15.0.2.5, the utility, its settings and log folder. Each object begins afresh.
struct InstalledMachine : support::Installation {
  InstalledMachine()
      : Installation(L"C:\\tavrel-acceptance", platform::DocumentsFolder(), platform::CommonAppDataFolder()) {
    support::MakeFolder(LogFolder());
    support::CopyOver(TAVREL_PROGRAM, program);
    PlaceExecutable(L"15.0.2.5");
    Install(support::Layout::two);
    WriteSettings("CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n");
  }
  ~InstalledMachine() { support::RemoveTree(root); }

  /// A path below the root folder.
  std::wstring File(const std::wstring& name) const { return root + L"\\" + name; }
  /// The one log file's path and text; empty unless there is exactly one.
  std::wstring LogFile() const {
    const std::vector<std::wstring> names = support::FileNames(LogFolder());
    return names.size() == 1 ? LogFolder() + L"\\" + names[0] : std::wstring();
  }
  std::string Log() const { return support::ReadBytes(LogFile()).value_or(""); }
  const std::wstring program = File(L"program\\QRTTavrelUtility.exe");
};

/// One run of a program, driven from outside; it ends with the object. Every wait is bounded.
/// A window that does not appear in time is null; null has no text and counts as disabled and hidden.
class Run {
 public:
  explicit Run(const std::wstring& program, const std::wstring& arguments = {}) {
    std::wstring command = L"\"" + program + L"\" " + arguments;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                   &process_);
  }
  Run(const Run&) = delete;
  ~Run() {
    TerminateProcess(process_.hProcess, 99);
    WaitForSingleObject(process_.hProcess, kLongestWaitMs);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }

  bool Runs() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT; }
  /// Waits for the end of the process: "exit code 0", or what the page shows while it runs on.
  std::string End() const {
    DWORD code = 0;
    if (WaitForSingleObject(process_.hProcess, kLongestWaitMs) != WAIT_OBJECT_0) {
      return "runs on, showing: " + WindowText(Control(IDC_MESSAGE));
    }
    GetExitCodeProcess(process_.hProcess, &code);
    return "exit code " + std::to_string(code);
  }
  /// Waits until the program has shown its window and waits for input.
  bool Idle() const { return WaitForInputIdle(process_.hProcess, kLongestWaitMs) == 0; }
  /// Waits until the first page shows a result and all earlier messages are handled. The sheet then has the
  /// keyboard.
  bool Answered() const {
    const HWND sheet = Sheet(), message = Item(sheet, IDC_MESSAGE);
    wchar_t start[2];
    const bool told = WaitUntil([&] { return InternalGetWindowText(message, start, 2) > 0; });
    const bool idle = Idle();
    Ask(message, WM_NULL);
    SetForegroundWindow(sheet);
    return told && idle && WaitUntil([&] { return GetForegroundWindow() == sheet; });
  }
  HWND Sheet() const { return Find(true, nullptr); }
  /// Waits for a dialog that is neither the sheet nor `other`: a message box or the save dialog.
  HWND Dialog(HWND other) const { return Find(false, other); }
  HWND Control(int id) const { return Item(Sheet(), id); }
  /// Whether this library is loaded.
  bool Has(const wchar_t* library) const {
    const platform::UniqueSnapshot snapshot(
        CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, process_.dwProcessId));
    MODULEENTRY32W module{};
    module.dwSize = sizeof module;
    BOOL more = Module32FirstW(snapshot.get(), &module);
    while (more && lstrcmpiW(module.szModule, library) != 0) more = Module32NextW(snapshot.get(), &module);
    return more != FALSE;
  }

 private:
  HWND Find(bool sheet, HWND other) const {
    HWND found = nullptr;
    WaitUntil([&] {
      while ((found = FindWindowExW(nullptr, found, WC_DIALOG, nullptr)) != nullptr) {
        DWORD process = 0;
        GetWindowThreadProcessId(found, &process);
        if (process == process_.dwProcessId && found != other && IsWindowVisible(found) &&
            sheet == (Item(found, IDC_MESSAGE) != nullptr)) {
          return true;
        }
      }
      return false;
    });
    return found;
  }

  PROCESS_INFORMATION process_{};
};
