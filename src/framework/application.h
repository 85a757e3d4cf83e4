#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>

class CCommandLineInfo;
class ComSession;
class CWnd;

/// The application object: one per process, made before `Run` and alive until the process ends.
class CWinApp {
 public:
  CWinApp();
  virtual ~CWinApp();
  CWinApp(const CWinApp&) = delete;
  CWinApp& operator=(const CWinApp&) = delete;

  /// The process's application object; null before it is made and after it is gone.
  static CWinApp* Current();

  /// InitInstance, then ExitInstance; returns the latter's value, the process's exit code. There is no
  /// message loop of its own: what InitInstance shows is modal.
  int Run(HINSTANCE instance);

  HINSTANCE Instance() const { return instance_; }

  /// The window that owns message boxes; null while there is none.
  CWnd* MainWindow() const { return main_window_; }
  void SetMainWindow(CWnd* window) { main_window_ = window; }

  /// Title of message boxes that are given none.
  const std::wstring& Title() const { return title_; }
  void SetTitle(std::wstring_view title) { title_ = title; }

  /// Keeps the name of the vendor key under which stored settings of the program would stand.
  void SetRegistryKey(std::wstring_view name) { registry_key_ = name; }
  const std::wstring& RegistryKey() const { return registry_key_; }

  /// Asks for the common controls of these classes (ICC_…). A run that shows nothing does not pay for them:
  /// PrepareWindows carries it out.
  void UseCommonControls(DWORD classes) { common_controls_ = classes; }
  /// Makes ready what windows need and the run has asked for: common controls and COM, once. The framework
  /// calls it before the first window, message box or dialog of the shell. What cannot be had is silently
  /// left out.
  static void PrepareWindows();

  /// Hands every argument of the process's command line to `info`.
  static void ParseCommandLine(CCommandLineInfo& info);

  /// Ends what InitInstance began and returns the exit code. May be called early and again by `Run`.
  virtual int ExitInstance();

 protected:
  /// Asks for COM, for the time from the first window on; an override calls it first. Returns whether a
  /// message loop is to follow, which no program on this class needs: `Run` ignores it.
  virtual BOOL InitInstance();

 private:
  HINSTANCE instance_ = nullptr;
  CWnd* main_window_ = nullptr;
  std::wstring title_;
  std::wstring registry_key_;
  DWORD common_controls_ = 0;  ///< classes asked for and not initialised yet
  bool com_wanted_ = false;    ///< asked for and not initialised yet
  std::unique_ptr<ComSession> com_;
};
