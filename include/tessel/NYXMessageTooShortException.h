/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// A received pipe message is shorter than its header or than its declared length.
class TESSEL_API NYXMessageTooShortException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit NYXMessageTooShortException(const std::string& message);
  NYXMessageTooShortException(const NYXMessageTooShortException& other);
  ~NYXMessageTooShortException() override;
  /// As NYXException::operator=.
  NYXMessageTooShortException& operator=(const NYXMessageTooShortException& other);
};

}  // namespace tessel
