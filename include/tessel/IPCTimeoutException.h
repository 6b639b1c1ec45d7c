/// @file
#pragma once

#include <tessel/IPCException.h>

namespace tessel {

/// A pipe operation did not complete within its time-out.
class TESSEL_API IPCTimeoutException : public IPCException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit IPCTimeoutException(const std::string& message);
  IPCTimeoutException(const IPCTimeoutException& other);
  ~IPCTimeoutException() override;
  /// As NYXException::operator=.
  IPCTimeoutException& operator=(const IPCTimeoutException& other);
};

}  // namespace tessel
