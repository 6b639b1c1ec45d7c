/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

/// A built-in principal that a file must not be open to.
class TESSEL_API WindowsGroupType {
 public:
  enum WindowsGroupTypeValue : int { GUESTS = 1, USERS = 2, EVERYONE = 3, OTHER = 4 };

  /// USERS, on purpose not OTHER.
  WindowsGroupType();
  WindowsGroupType(const WindowsGroupTypeValue& value);  // NOLINT(google-explicit-constructor): a type is its value
  WindowsGroupType(const WindowsGroupType& other);
  WindowsGroupType& operator=(const WindowsGroupType& other);
  virtual ~WindowsGroupType();

  bool operator==(const WindowsGroupType& other) const;
  bool operator!=(const WindowsGroupType& other) const;

  WindowsGroupTypeValue getValue() const;

  /// @return "Guests", "Users", "Everyone", or "other" for any other value.
  std::string toString() const;

 private:
  WindowsGroupTypeValue value_;
};

}  // namespace tessel
