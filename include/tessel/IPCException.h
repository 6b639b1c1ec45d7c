/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// The pipe channel failed in a way that no more specific class names.
class TESSEL_API IPCException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit IPCException(const std::string& message);
  IPCException(const IPCException& other);
  ~IPCException() override;
  /// As NYXException::operator=.
  IPCException& operator=(const IPCException& other);
};

}  // namespace tessel
