#include "platform/administrator.h"

#include <windows.h>

#include <sddl.h>

#include "platform/handles.h"

namespace platform {
namespace {

// The rights of the descriptor below. They are arbitrary bits, because it belongs to no object of Windows.
constexpr DWORD kRead = 1;
constexpr DWORD kWrite = 2;
/// Grants both to the built-in Administrators group, which is its owner and group as well.
constexpr wchar_t kDescriptor[] = L"O:BAG:BAD:(A;;0x3;;;BA)";

UniqueKernelHandle OpenCurrentToken() {
  constexpr DWORD access = TOKEN_DUPLICATE | TOKEN_QUERY;
  UniqueKernelHandle token;
  if (OpenThreadToken(GetCurrentThread(), access, TRUE, token.put())) return token;
  if (GetLastError() != ERROR_NO_TOKEN) return {};
  if (!OpenProcessToken(GetCurrentProcess(), access, token.put())) return {};
  return token;
}

}  // namespace

bool IsRunningAsAdmin() {
  const UniqueKernelHandle current = OpenCurrentToken();
  // AccessCheck requires an impersonation token.
  UniqueKernelHandle token;
  UniqueDescriptor descriptor;
  if (!current || !DuplicateToken(current.get(), SecurityImpersonation, token.put()) ||
      !ConvertStringSecurityDescriptorToSecurityDescriptorW(kDescriptor, SDDL_REVISION_1, descriptor.put(),
                                                            nullptr)) {
    return false;
  }
  GENERIC_MAPPING mapping{
      .GenericRead = kRead, .GenericWrite = kWrite, .GenericExecute = 0, .GenericAll = kRead | kWrite};
  PRIVILEGE_SET privileges{};
  DWORD size = sizeof privileges;
  DWORD granted = 0;
  BOOL status = FALSE;
  return AccessCheck(descriptor.get(), token.get(), kRead, &mapping, &privileges, &size, &granted, &status) &&
         status;
}

}  // namespace platform
