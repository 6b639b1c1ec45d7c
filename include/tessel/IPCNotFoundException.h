/// @file
#pragma once

#include <tessel/IPCException.h>

namespace tessel {

/// No server listens under the service name.
class TESSEL_API IPCNotFoundException : public IPCException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit IPCNotFoundException(const std::string& message);
  IPCNotFoundException(const IPCNotFoundException& other);
  ~IPCNotFoundException() override;
  /// As NYXException::operator=.
  IPCNotFoundException& operator=(const IPCNotFoundException& other);
};

}  // namespace tessel
