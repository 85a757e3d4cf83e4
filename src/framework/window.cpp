#include "framework/window.h"

#include <commctrl.h>

#include "platform/system_library.h"

namespace {

platform::SystemLibrary library(L"comctl32.dll");
template <class Type>
using Function = platform::SystemFunction<Type>;
Function<decltype(&::DefSubclassProc)> CallDefault(library, "DefSubclassProc");
Function<decltype(&::GetWindowSubclass)> GetSubclass(library, "GetWindowSubclass");
Function<decltype(&::RemoveWindowSubclass)> RemoveSubclass(library, "RemoveWindowSubclass");
Function<decltype(&::SetWindowSubclass)> SetSubclass(library, "SetWindowSubclass");

constexpr UINT_PTR kSubclassId = 1;
constexpr UINT kUnusedMessage = WM_APP + 0x3FFF;

}  // namespace

CWnd::~CWnd() {
  Detach();
}

bool CWnd::Attach(HWND window) {
  Detach();
  // Without the library's own processing the window would lose its messages.
  if (!CallDefault.IsAvailable()) return false;
  if (!SetSubclass(window, &CWnd::Procedure, kSubclassId, reinterpret_cast<DWORD_PTR>(this))) {
    return false;
  }
  handle_ = window;
  subclassed_ = true;
  return true;
}

void CWnd::Detach() {
  if (subclassed_) RemoveSubclass(handle_, &CWnd::Procedure, kSubclassId);
  subclassed_ = false;
  handle_ = nullptr;
}

std::wstring CWnd::Text() const {
  if (handle_ == nullptr) return {};
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(handle_)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(handle_, text.data(), static_cast<int>(text.size()))));
  return text;
}

void CWnd::SetText(const std::wstring& text) {
  if (handle_ != nullptr) SetWindowTextW(handle_, text.c_str());
}

void CWnd::Enable(bool enable) {
  if (handle_ != nullptr) EnableWindow(handle_, enable);
}

void CWnd::Show(bool show) {
  if (handle_ != nullptr) ShowWindow(handle_, show ? SW_SHOW : SW_HIDE);
}

void CWnd::RedrawNow() {
  if (handle_ != nullptr) RedrawWindow(handle_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void CWnd::PaintBeforeBlocking() {
  if (handle_ == nullptr) return;
  RedrawWindow(handle_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
  GdiFlush();
  // An empty PeekMessage makes display drivers that collect drawing, such as Wine's, flush it.
  MSG message;
  PeekMessageW(&message, handle_, kUnusedMessage, kUnusedMessage, PM_NOREMOVE);
}

LRESULT CWnd::Default(UINT message, WPARAM wparam, LPARAM lparam) {
  return CallDefault(handle_, message, wparam, lparam);
}

HBRUSH CWnd::ReflectColor(UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR object = 0;
  GetSubclass(reinterpret_cast<HWND>(lparam), &CWnd::Procedure, kSubclassId, &object);
  if (object == 0) return nullptr;
  return reinterpret_cast<CWnd*>(object)->OnReflectedColor(message, reinterpret_cast<HDC>(wparam));
}

LRESULT CALLBACK CWnd::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                                 DWORD_PTR object) {
  CWnd* self = reinterpret_cast<CWnd*>(object);
  LRESULT result = 0;
  const bool handled = self->OnMessage(message, wparam, lparam, result) && message != WM_NCDESTROY;
  if (message == WM_NCDESTROY) self->Detach();
  return handled ? result : CallDefault(window, message, wparam, lparam);
}
