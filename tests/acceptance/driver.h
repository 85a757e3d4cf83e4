#pragma once

#include <windows.h>

#include <functional>
#include <set>
#include <string>

#include "support/http_server.h"
#include "support/machine.h"

inline constexpr DWORD kLongestWaitMs = 20000;

/// The machine as an installer and a user leave it, in the prefix's own registry and folders: the product at
/// 15.0.2.5, the utility, its settings and log folder. Each object begins afresh.
struct InstalledMachine : support::Installation {
  InstalledMachine();
  ~InstalledMachine() { support::RemoveTree(root_); }

  /// The path of "korsa.ini"; of anything else below the root folder.
  std::wstring File(const std::wstring& name) const;
  /// The one log file's path and text; empty unless there is exactly one.
  std::wstring LogFile() const;
  std::string Log() const { return support::ReadBytes(LogFile()).value_or(""); }
  const std::wstring program = File(L"program\\QRTTavrelUtility.exe");
};

/// One run of a program, driven from outside; it ends with the object. Every wait is bounded.
/// A window that does not appear in time is null; null has no text and counts as disabled and hidden.
class Run {
 public:
  explicit Run(const std::wstring& program, const std::wstring& arguments = {});
  Run(const Run&) = delete;
  ~Run();

  bool Runs() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT; }
  /// Waits for the end of the process: "exit code 0", or what the page shows while it runs on.
  std::string End() const;
  /// Waits until the program has shown its window and waits for input.
  bool Idle() const { return WaitForInputIdle(process_.hProcess, kLongestWaitMs) == 0; }
  /// Waits until the first page shows a result and all earlier messages are handled. The sheet then has the
  /// keyboard.
  bool Answered() const;
  HWND Sheet() const { return Find(true, nullptr); }
  /// Waits for a dialog that is neither the sheet nor `other`: a message box or the save dialog.
  HWND Dialog(HWND other) const { return Find(false, other); }
  HWND Control(int id) const;
  /// Names of the libraries that are loaded, without their extension and in lower case.
  std::set<std::wstring> Libraries() const;

 private:
  HWND Find(bool sheet, HWND other) const;

  PROCESS_INFORMATION process_{};
};

bool WaitUntil(const std::function<bool()>& condition, DWORD milliseconds = kLongestWaitMs);
/// All windows of a class in `parent`, in their order; null parent: the top-level windows.
std::vector<HWND> WindowsOfClass(HWND parent, const std::wstring& class_name);
/// SendMessage's result; 0 when the program does not answer.
LRESULT Ask(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0);
/// Text of a window of another process, in UTF-8, lines ended by "\n".
std::string WindowText(HWND window);
/// Presses keys one after the other and releases them in the reverse order, as a keyboard does.
void Press(const std::vector<BYTE>& keys);
/// Clicks in the middle of a window as a mouse does, whether or not it is enabled.
void PressMouse(HWND window);

/// A list on the server with one pack: 15.0.2.7.
inline constexpr char kOnePack[] = "[Update Packs for Versions]\r\n15.0=\r\n[Varnexa15_0_2_7]\r\nSize=1\r\n";
