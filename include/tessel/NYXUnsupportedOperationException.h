/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// The operation does not exist on this platform.
class TESSEL_API NYXUnsupportedOperationException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit NYXUnsupportedOperationException(const std::string& message);
  NYXUnsupportedOperationException(const NYXUnsupportedOperationException& other);
  ~NYXUnsupportedOperationException() override;
  /// As NYXException::operator=.
  NYXUnsupportedOperationException& operator=(const NYXUnsupportedOperationException& other);
};

}  // namespace tessel
