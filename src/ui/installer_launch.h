#pragma once

/// Ends every running process of the product at once, unsaved work or not. The image name is compared
/// case-sensitively, so that one listed all in upper case stays; a process that cannot be opened is skipped.
/// Returns whether the process list was walked to its end.
bool CloseRunningProduct();
