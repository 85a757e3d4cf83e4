#include "framework/wait_cursor.h"

#include <windows.h>

namespace {

HCURSOR g_replaced_cursor = nullptr;

}  // namespace

void BeginWaitCursor() {
  const HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
  const HCURSOR replaced = SetCursor(wait);
  // After a wait that was never ended, the wait cursor must not count as the replaced one.
  if (replaced != wait) g_replaced_cursor = replaced;
}

void EndWaitCursor() {
  if (g_replaced_cursor == nullptr) return;
  SetCursor(g_replaced_cursor);
  g_replaced_cursor = nullptr;
}
