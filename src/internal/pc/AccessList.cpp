#include "internal/pc/AccessList.h"

namespace tessel::internal {

void AccessList::addRoomFor(PSID principal) {
  constexpr DWORD kHeaderAndMask = 8;
  size_ += kHeaderAndMask + GetLengthSid(principal);
}

bool AccessList::initialize() {
  list_.assign((size_ + sizeof(DWORD) - 1) / sizeof(DWORD), 0);
  return InitializeAcl(get(), size_, ACL_REVISION) != FALSE;
}

bool AccessList::allow(PSID principal, DWORD mask, DWORD flags) {
  return AddAccessAllowedAceEx(get(), ACL_REVISION, flags, mask, principal) != FALSE;
}

ACL* AccessList::get() { return reinterpret_cast<ACL*>(list_.data()); }

}  // namespace tessel::internal
