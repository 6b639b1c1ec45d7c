/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// A required property is not set.
class TESSEL_API PropertyNotFoundException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit PropertyNotFoundException(const std::string& message);
  PropertyNotFoundException(const PropertyNotFoundException& other);
  ~PropertyNotFoundException() override;
  /// As NYXException::operator=.
  PropertyNotFoundException& operator=(const PropertyNotFoundException& other);
};

}  // namespace tessel
