/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// A file could not be read, written, locked or secured.
class TESSEL_API NYXIOException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit NYXIOException(const std::string& message);
  NYXIOException(const NYXIOException& other);
  ~NYXIOException() override;
  /// As NYXException::operator=.
  NYXIOException& operator=(const NYXIOException& other);
};

}  // namespace tessel
