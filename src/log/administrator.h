#pragma once

/// Whether the process may act as a member of the built-in Administrators group. Any failure on the way
/// answers false.
bool IsRunningAsAdmin();
