#pragma once

#include <windows.h>

#include <string>

#include "framework/controls.h"
#include "platform/handles.h"

/// A static text with a colour and font that its parent does not share. A click has the shell open the text,
/// as a mail address when it contains "@"; clicks arrive only when the control has the notify style.
class CSysURL : public CStatic {
 public:
  CSysURL();

  /// Sets the text colour and redraws. A caller that sets m_crText directly has to redraw as well.
  CSysURL& SetLinkColor(COLORREF color);

  /// Where it would be unreadable on the pages' background, as black is on black, the control has the
  /// system's colour of button texts instead.
  COLORREF m_crText = GetSysColor(COLOR_WINDOWTEXT);

 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;
  HBRUSH OnReflectedColor(UINT message, HDC context) override;

  /// Has the shell open the control's text. A failure is not reported.
  void OpenText() const;
  HFONT Font() const { return m_font.get(); }

 private:
  platform::UniqueBrush m_hbrBackground;
  HBRUSH m_hbrSpare;  // not used and not freed before the process ends
  LOGFONTW m_logFont = {};
  platform::UniqueFont m_font;

 public:
  int m_bReserved0 = 0;         ///< the control does not read it
  int m_bReserved1 = 1;         ///< the control does not read it
  HCURSOR m_hCursor = nullptr;  ///< shown over the control; null: the standard cursor
};

/// The link to the dated log file. It is as wide as its text and has the system's colour of links. Tab moves
/// the focus to it; Space or Enter opens it.
class CLogFileLink : public CSysURL {
 public:
  CLogFileLink();

  /// Shows `path`, with an ellipsis when it is wider than `widest` pixels. Hides the control when `path` is
  /// empty.
  void ShowPath(const std::wstring& path, int widest);

 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;
  HBRUSH OnReflectedColor(UINT message, HDC context) override;

 private:
  void DrawFocus();
};
