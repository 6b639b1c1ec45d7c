// The access list of a server's pipe.
#pragma once

#include <vector>

#include "internal/LastError.h"
#include "internal/pc/Platform.h"
#include "internal/pc/Token.h"

namespace tessel {

class RasDescriptor;

// Full access for the local Administrators and for the user that runs the server, for nobody else.
class SecurityData {
 public:
  // Builds all parts. Returns whether that succeeded; otherwise error() is the number of the call that failed.
  bool setSecurityAttributes();

  const internal::LastError& error() const { return error_; }

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
  internal::LastError error_{NO_ERROR};
};

}  // namespace tessel
