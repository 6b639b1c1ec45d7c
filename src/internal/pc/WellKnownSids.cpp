#include "internal/pc/WellKnownSids.h"

namespace tessel::internal {
namespace {

UniqueSid builtInAlias(DWORD alias) {
  SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
  PSID sid = nullptr;
  AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, alias, 0, 0, 0, 0, 0, 0, &sid);
  return UniqueSid(sid);
}

}  // namespace

UniqueSid everyoneSid() {
  SID_IDENTIFIER_AUTHORITY authority = SECURITY_WORLD_SID_AUTHORITY;
  PSID sid = nullptr;
  AllocateAndInitializeSid(&authority, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &sid);
  return UniqueSid(sid);
}

UniqueSid administratorsSid() { return builtInAlias(DOMAIN_ALIAS_RID_ADMINS); }

UniqueSid usersSid() { return builtInAlias(DOMAIN_ALIAS_RID_USERS); }

UniqueSid guestsSid() { return builtInAlias(DOMAIN_ALIAS_RID_GUESTS); }

}  // namespace tessel::internal
