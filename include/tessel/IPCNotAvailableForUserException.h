/// @file
#pragma once

#include <tessel/IPCException.h>

namespace tessel {

/// The pipe exists but the current user may not open it.
class TESSEL_API IPCNotAvailableForUserException : public IPCException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit IPCNotAvailableForUserException(const std::string& message);
  IPCNotAvailableForUserException(const IPCNotAvailableForUserException& other);
  ~IPCNotAvailableForUserException() override;
  /// As NYXException::operator=.
  IPCNotAvailableForUserException& operator=(const IPCNotAvailableForUserException& other);
};

}  // namespace tessel
