// An access list that grants and denies nothing else than it says: built entry by entry, never inherited from.
#pragma once

#include <vector>

#include "internal/pc/Platform.h"

namespace tessel::internal {

// Each principal's room is added first; then the list is initialized, then it takes its entries. On failure the
// thread's last error tells why.
class AccessList {
 public:
  void addRoomFor(PSID principal);
  bool initialize();
  bool allow(PSID principal, DWORD mask, DWORD flags);
  ACL* get();

 private:
  DWORD size_ = sizeof(ACL);
  std::vector<DWORD> list_;
};

}  // namespace tessel::internal
