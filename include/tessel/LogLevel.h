/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// The severity of a record; a higher value is more severe.
class TESSEL_API LogLevel {
 public:
  enum LogLevelValue : int {
    ALL = 0,
    FINEST = 10,
    FINER = 20,
    FINE = 30,
    CONFIG = 40,
    INFO = 50,
    WARNING = 60,
    SEVERE = 70,
    OFF = 9999
  };

  /// OFF.
  LogLevel();
  LogLevel(const LogLevelValue& value);  // NOLINT(google-explicit-constructor): a level is its value
  LogLevel(const LogLevel& other);
  LogLevel& operator=(const LogLevel& other);
  virtual ~LogLevel();

  bool operator==(const LogLevel& other) const;
  bool operator!=(const LogLevel& other) const;
  bool operator>=(const LogLevel& other) const;

  /// @return one letter; 'E' for SEVERE, since operators read it as an error; '?' for an unknown value.
  char getIndicator() const;

  /// @return the name padded to 7 characters; "???    " for an unknown value.
  std::string toString() const;

  /// @return the raw value.
  int getValue() const;

 private:
  int value_;
};

/// Writes `level.toString()`.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const LogLevel& level);

}  // namespace tessel
