#pragma once

/// Shows the hourglass. It stays until EndWaitCursor or until the next message that sets a cursor.
void BeginWaitCursor();
/// Shows the cursor that BeginWaitCursor replaced; nothing happens when none is remembered.
void EndWaitCursor();
