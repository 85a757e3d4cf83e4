#pragma once

namespace platform {

/// Whether the process may act as a member of the built-in Administrators group. Returns false when that
/// cannot be determined.
bool IsRunningAsAdmin();

}  // namespace platform
