#include "framework/wait_cursor.h"

#include <windows.h>

namespace {

HCURSOR g_replaced_cursor = nullptr;

}  // namespace

void BeginWaitCursor() {
  const HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
  const HCURSOR replaced = SetCursor(wait);
  // A wait that was never ended must not become what a later one goes back to.
  if (replaced != wait) g_replaced_cursor = replaced;
}

void EndWaitCursor() {
  if (g_replaced_cursor == nullptr) return;
  SetCursor(g_replaced_cursor);
  g_replaced_cursor = nullptr;
}
