// The access list of a server's pipe.
#pragma once

#include <vector>

#include "internal/pc/Platform.h"
#include "internal/pc/Token.h"

namespace tessel {

class RasDescriptor;

// Full access for the local Administrators and for the user that runs the server, for nobody else.
class SecurityData {
 public:
  // Builds all parts. Returns 0 or the number of the system call that failed.
  unsigned long setSecurityAttributes();

  // Null unless built.
  SECURITY_ATTRIBUTES* getSecurityAttributes();

 private:
  bool readUser();
  bool buildList(PSID administrators);
  bool buildDescriptor();

  static const RasDescriptor rd;

  internal::TokenBuffer user_;
  std::vector<DWORD> list_;
  SECURITY_DESCRIPTOR descriptor_{};
  SECURITY_ATTRIBUTES attributes_{};
  bool built_ = false;
};

}  // namespace tessel
