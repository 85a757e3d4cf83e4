#pragma once

#include <windows.h>

#include <string>

/// An object that stands for a window it does not own. While attached, the object sees the window's messages
/// first; when the window is destroyed the object lets go of it by itself.
class CWnd {
 public:
  CWnd() = default;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;
  virtual ~CWnd();

  /// Subclasses `window`. False, and no change, when the window does not exist or belongs to another thread.
  bool Attach(HWND window);
  void Detach();
  /// The object attached to `window`; null when there is none.
  static CWnd* FromHandle(HWND window);

  /// Null while no window is attached; every call below then does nothing.
  HWND Handle() const { return handle_; }

  std::wstring Text() const;
  void SetText(const std::wstring& text);
  void Enable(bool enable);
  void Show(bool show);
  /// Invalidates the whole window, erases it and paints at once.
  void RedrawNow();
  /// Paints whatever is invalid in the window and its children and hands it to the screen, for a thread that
  /// is about to stop answering messages for a while.
  void PaintBeforeBlocking();

 protected:
  /// Called for each message before the window's own procedure. True: handled, `result` is the answer.
  virtual bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
  /// A WM_CTLCOLOR… message that the parent sent back to this control. A brush answers it; null leaves it to
  /// the parent's default.
  virtual HBRUSH OnReflectedColor(UINT message, HDC context);

  /// The window's own processing of a message.
  LRESULT Default(UINT message, WPARAM wparam, LPARAM lparam);
  /// Sends a parent's WM_CTLCOLOR… message to the object of the control that it concerns.
  static bool ReflectColor(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);

  /// For windows whose messages arrive another way (dialog pages): keeps the handle without subclassing.
  void Adopt(HWND window) { handle_ = window; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                    DWORD_PTR object);

  HWND handle_ = nullptr;
  bool subclassed_ = false;
};
