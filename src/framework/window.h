#pragma once

#include <windows.h>

#include <string>

/// An object for a window that it does not own. While attached, the object gets the window's messages first.
/// It detaches itself when the window is destroyed.
class CWnd {
 public:
  CWnd() = default;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;
  virtual ~CWnd();

  /// Subclasses `window`. False, and no change, when the window does not exist or belongs to another thread.
  bool Attach(HWND window);
  void Detach();

  /// Null while no window is attached; every call below then does nothing.
  HWND Handle() const { return handle_; }

  std::wstring Text() const;
  void SetText(const std::wstring& text);
  void Enable(bool enable);
  void Show(bool show);
  /// Invalidates the whole window, erases it and paints it before it returns.
  void RedrawNow();
  /// Paints the invalid parts of the window and its children and has the screen show them, for a thread that
  /// is about to block.
  void PaintBeforeBlocking();

 protected:
  /// Called for each message before the window's own procedure. True: handled, `result` is the answer.
  virtual bool OnMessage(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/, LRESULT& /*result*/) {
    return false;
  }
  /// A WM_CTLCOLOR… message that the parent sent back to this control. Returns the brush for it; null leaves
  /// it to the parent's default.
  virtual HBRUSH OnReflectedColor(UINT /*message*/, HDC /*context*/) { return nullptr; }

  /// The window's own processing of a message.
  LRESULT Default(UINT message, WPARAM wparam, LPARAM lparam);
  /// Sends a parent's WM_CTLCOLOR… message to the object of the control that it concerns; returns its brush.
  static HBRUSH ReflectColor(UINT message, WPARAM wparam, LPARAM lparam);

  /// Keeps the handle without subclassing, for dialog pages, whose messages arrive by the dialog procedure.
  void Adopt(HWND window) { handle_ = window; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                    DWORD_PTR object);

  HWND handle_ = nullptr;
  bool subclassed_ = false;
};
