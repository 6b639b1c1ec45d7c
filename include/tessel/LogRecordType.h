/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// What a record reports.
class TESSEL_API LogRecordType {
 public:
  enum LogRecordTypeValue : int { ENTRY = 1, EXIT = 2, DATA = 3, THROWING = 4, EVENT = 5 };

  /// ENTRY.
  LogRecordType();
  LogRecordType(const LogRecordTypeValue& value);  // NOLINT(google-explicit-constructor): a type is its value
  LogRecordType(const LogRecordType& other);
  LogRecordType& operator=(const LogRecordType& other);
  virtual ~LogRecordType();

  bool operator==(const LogRecordType& other) const;
  bool operator!=(const LogRecordType& other) const;

  /// @return false for EVENT only.
  bool isTraceable() const;

  /// @return the name padded to 8 characters; "???     " for an unknown value.
  std::string toString() const;

  /// @return the raw value.
  int getValue() const;

 private:
  int value_;
};

/// Writes `type.toString()`.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const LogRecordType& type);

}  // namespace tessel
