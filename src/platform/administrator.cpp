#include "platform/administrator.h"

#include <windows.h>

#include "platform/handles.h"

namespace platform {
namespace {

// The rights that the descriptor below grants and the check asks for. They are arbitrary bits, because the
// descriptor belongs to no object of Windows.
constexpr DWORD kRead = 1;
constexpr DWORD kWrite = 2;

UniqueKernelHandle OpenCurrentToken() {
  constexpr DWORD access = TOKEN_DUPLICATE | TOKEN_QUERY;
  UniqueKernelHandle token;
  if (OpenThreadToken(GetCurrentThread(), access, TRUE, token.put())) return token;
  if (GetLastError() != ERROR_NO_TOKEN) return {};
  if (!OpenProcessToken(GetCurrentProcess(), access, token.put())) return {};
  return token;
}

UniqueSid AdministratorsGroup() {
  SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
  UniqueSid sid;
  if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0,
                                0, 0, 0, sid.put())) {
    return {};
  }
  return sid;
}

bool IsGranted(HANDLE token, SECURITY_DESCRIPTOR& descriptor) {
  GENERIC_MAPPING mapping{
      .GenericRead = kRead, .GenericWrite = kWrite, .GenericExecute = 0, .GenericAll = kRead | kWrite};
  PRIVILEGE_SET privileges{};
  DWORD size = sizeof privileges;
  DWORD granted = 0;
  BOOL status = FALSE;
  return AccessCheck(&descriptor, token, kRead, &mapping, &privileges, &size, &granted, &status) != FALSE &&
         status != FALSE;
}

}  // namespace

bool IsRunningAsAdmin() {
  const UniqueKernelHandle current = OpenCurrentToken();
  if (!current) return false;
  // AccessCheck requires an impersonation token.
  UniqueKernelHandle token;
  if (!DuplicateToken(current.get(), SecurityImpersonation, token.put())) return false;
  const UniqueSid group = AdministratorsGroup();
  if (!group) return false;

  // Large enough for one entry with the longest SID.
  alignas(DWORD) BYTE storage[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE];
  ACL* acl = reinterpret_cast<ACL*>(storage);
  SECURITY_DESCRIPTOR descriptor{};
  return InitializeAcl(acl, sizeof storage, ACL_REVISION) &&
         AddAccessAllowedAce(acl, ACL_REVISION, kRead | kWrite, group.get()) &&
         InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) &&
         SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE) &&
         SetSecurityDescriptorGroup(&descriptor, group.get(), FALSE) &&
         SetSecurityDescriptorOwner(&descriptor, group.get(), FALSE) && IsGranted(token.get(), descriptor);
}

}  // namespace platform
