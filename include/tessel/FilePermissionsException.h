/// @file
#pragma once

#include <tessel/NYXException.h>

namespace tessel {

/// A file gives access beyond what is allowed, or its access list cannot be read.
class TESSEL_API FilePermissionsException : public NYXException {
 public:
  /// @param message the complete, already translated text; copied. There is no cause.
  explicit FilePermissionsException(const std::string& message);
  FilePermissionsException(const FilePermissionsException& other);
  ~FilePermissionsException() override;
  /// As NYXException::operator=.
  FilePermissionsException& operator=(const FilePermissionsException& other);
};

}  // namespace tessel
