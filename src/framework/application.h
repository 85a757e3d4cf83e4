#pragma once

#include <windows.h>

#include <string>
#include <string_view>

class CWnd;

/// Receives the arguments of the command line, without the program's name, one in each call.
class CCommandLineInfo {
 public:
  /// `text` is one argument, without one leading "/" or "-" when it is a switch.
  virtual void ParseParam(const wchar_t* text, bool is_switch, bool is_last) = 0;
  virtual ~CCommandLineInfo() = default;
};

/// The application object: one per process, created before `Run` and alive until the process ends.
class CWinApp {
 public:
  CWinApp() { current_ = this; }
  virtual ~CWinApp() { current_ = nullptr; }
  CWinApp(const CWinApp&) = delete;
  CWinApp& operator=(const CWinApp&) = delete;

  /// The process's application object; null before its construction and after its destruction.
  static CWinApp* Current() { return current_; }

  /// InitInstance, then ExitInstance; returns the latter's value, the process's exit code. There is no
  /// message loop: a window that InitInstance shows runs its own.
  int Run(HINSTANCE instance);

  HINSTANCE Instance() const { return instance_; }

  /// The window that owns message boxes; null while there is none.
  CWnd* MainWindow() const { return main_window_; }
  void SetMainWindow(CWnd* window) { main_window_ = window; }

  /// Title of message boxes that set no other title.
  const std::wstring& Title() const { return title_; }
  void SetTitle(std::wstring_view title) { title_ = title; }

  /// Stores the name of the vendor key for program settings. No settings are stored under it.
  void SetRegistryKey(std::wstring_view name) { registry_key_ = name; }

  /// Initialises common controls and COM, and makes the windows visible when the program was started hidden
  /// or minimised. The framework calls it before every window, message box and dialog of the shell; only the
  /// first call after InitInstance has an effect. Failures are ignored.
  static void PrepareWindows();

  /// Calls `info` for every argument of the process's command line.
  static void ParseCommandLine(CCommandLineInfo& info);

  /// Releases COM and returns the exit code. May be called early and again by `Run`.
  virtual int ExitInstance();

 protected:
  /// Enables PrepareWindows; an override calls it first. `Run` ignores the return value, which says whether a
  /// message loop should follow.
  virtual BOOL InitInstance();

 private:
  HINSTANCE instance_ = nullptr;
  CWnd* main_window_ = nullptr;
  std::wstring title_;
  std::wstring registry_key_;
  bool windows_pending_ = false;  ///< true from InitInstance until PrepareWindows has run
  bool com_ready_ = false;

  static inline CWinApp* current_ = nullptr;
};
