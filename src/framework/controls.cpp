#include "framework/controls.h"

#include <initguid.h>
#include <ole2.h>
#include <oleacc.h>

#include "platform/system_library.h"

namespace {

platform::SystemLibrary ole(L"ole32.dll");
platform::SystemFunction<decltype(&::CoCreateInstance)> CreateInstance(ole, "CoCreateInstance", E_FAIL);

// From uiautomation.h and winuser.h of Windows 8.
constexpr GUID kLiveSetting{0xC12BCD8E, 0x2A8E, 0x4950, {0x8A, 0xE7, 0x36, 0x25, 0x11, 0x1D, 0x58, 0xEB}};
constexpr LONG kPolite = 1;  // read after what is being read
constexpr DWORD kLiveRegionChanged = 0x8019;

constexpr WPARAM kSelectAllCharacter = 1;  // WM_CHAR of Ctrl+A

bool IsSelectAllKey(WPARAM key) {
  return key == 'A' && GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
}

}  // namespace

void CStatic::Announce() {
  // Narrator reads only an element with a live setting; other screen readers need the event alone.
  void* created = nullptr;
  if (SUCCEEDED(CreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                               &created)) &&
      created != nullptr) {
    auto* services = static_cast<IAccPropServices*>(created);
    VARIANT setting = {};
    setting.vt = VT_I4;
    setting.lVal = kPolite;
    services->SetHwndProp(Handle(), static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, kLiveSetting, setting);
    services->Release();
  }
  NotifyWinEvent(kLiveRegionChanged, Handle(), OBJID_CLIENT, CHILDID_SELF);
}

bool CReadOnlyEdit::OnMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_GETDLGCODE:
      // By default an edit handles Tab, Enter and Escape, and selects everything when it gets the focus.
      result = Default(message, wparam, lparam) & ~(DLGC_WANTALLKEYS | DLGC_WANTTAB | DLGC_HASSETSEL);
      return true;
    case WM_SETFOCUS:
      result = Default(message, wparam, lparam);
      HideCaret(Handle());
      return true;
    case WM_KEYDOWN:
      if (!IsSelectAllKey(wparam)) return false;
      SendMessageW(Handle(), EM_SETSEL, 0, -1);
      return true;
    case WM_CHAR:
      return wparam == kSelectAllCharacter;
    default:
      return CWnd::OnMessage(message, wparam, lparam, result);
  }
}
