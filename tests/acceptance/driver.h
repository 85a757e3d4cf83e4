#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "support/http_server.h"
#include "support/machine.h"

/// The machine as an installer and a user leave it, in the prefix's own registry and folders: the product at
/// 15.0.2.5, the utility, its settings and log folder. Each object begins afresh.
struct Stage {
  Stage();
  Stage(const Stage&) = delete;
  ~Stage() { support::RemoveTree(folder); }

  const std::wstring folder = L"C:\\tavrel-acceptance";
  const std::wstring program = folder + L"\\program\\QRTTavrelUtility.exe";
  const std::wstring product = folder + L"\\product\\Qrt.exe";

  void PlaceProduct(const std::wstring& version) const;
  /// One of the values that the installer writes; an empty text takes it away.
  void SetFact(const std::wstring& name, std::wstring_view text) const;
  /// Replaces korsa.ini by these lines below its section's heading.
  void WriteSettings(std::string_view lines) const;
  std::string Setting(const wchar_t* key) const;
  /// The one log file's path; empty unless there is exactly one.
  std::wstring LogFile() const;
};

/// One run of a program, driven from outside; what it started ends with the object. Every wait is bounded.
/// What is not found in time is a null handle, which has no text and is neither enabled nor visible.
class Run {
 public:
  explicit Run(const std::wstring& program, const std::wstring& arguments = {});
  Run(const Run&) = delete;
  ~Run();

  bool Runs() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT; }
  /// Waits for the end of the process; whether it ended with exit code 0.
  bool Ended() const;
  /// Waits until the first page tells a result and everything done so far has been dealt with. The keyboard
  /// is the sheet's from here on.
  bool Answered() const;
  /// Waits for a dialog that is neither the sheet nor `other`: a message box or the save dialog.
  HWND Dialog(HWND other = nullptr) const;
  bool ShowsWindow() const;
  bool ShowsDialog() const { return FindDialog(false, nullptr) != nullptr; }

  HWND Sheet() const;
  HWND Control(int id) const;
  std::string Text(int id) const;
  bool Enabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
  bool Visible(int id) const { return IsWindowVisible(Control(id)) != FALSE; }
  /// Shows the log page and hands back its text.
  std::string ShowLog() const;

  /// Clicks a control of the sheet. That may open a box or end the program: nothing is awaited.
  void Press(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }
  /// Presses keys one after the other and lets go of them the other way round, as the keyboard does.
  void Keys(std::initializer_list<WORD> keys) const;

 private:
  bool IsMainWindow(HWND window) const;
  HWND FindDialog(bool sheet, HWND other) const;

  PROCESS_INFORMATION process_{};
  HANDLE job_;
};

bool WaitUntil(const std::function<bool()>& condition);
/// Descendant of `parent` with this identifier.
HWND Descendant(HWND parent, int id);
/// What SendMessage answers; 0 when the program does not.
LRESULT Ask(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0);
/// Text of a window of another process, in UTF-8, lines ended by "\n".
std::string WindowText(HWND window);
/// Title and text of a message box with a "|" between them.
std::string BoxText(HWND box);
/// Presses a button of a box and waits until the box is gone.
bool Answer(HWND box, int button);

/// A list on the server with one pack: 15.0.2.7.
inline constexpr char kOnePack[] = "[Update Packs for Versions]\r\n15.0=\r\n[Varnexa15_0_2_7]\r\nSize=1\r\n";
