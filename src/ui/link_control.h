#pragma once

#include <windows.h>

#include <string>

#include "framework/controls.h"
#include "framework/gdi_owner.h"

/// A static text with a colour and font of its own; a click has the shell open the text, as a mail address
/// when it holds an "@". Clicks reach it only when the control has the notify style.
class CSysURL : public CStatic {
 public:
  CSysURL();

  /// Sets the text colour and redraws at once. Whoever sets m_crText directly redraws in the same way.
  CSysURL& SetLinkColor(COLORREF color);

  COLORREF m_crText = GetSysColor(COLOR_WINDOWTEXT);

 protected:
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override;
  HBRUSH OnReflectedColor(UINT message, HDC context) override;

  /// Hands the control's text to the shell; what comes of it is not reported.
  void OpenText() const;
  HFONT Font() const { return m_font.get(); }

 private:
  GdiOwner<HBRUSH> m_hbrBackground;
  HBRUSH m_hbrSpare;  // stays until the process ends: nobody uses or frees it
  LOGFONTW m_logFont = {};
  GdiOwner<HFONT> m_font;

 public:
  // Carried for whoever places the control; it does not consult them.
  int m_bReserved0 = 0;
  int m_bReserved1 = 1;
  HCURSOR m_hCursor = nullptr;  ///< shown over the control; null: the standard cursor
};
